#include "merge/clip_match.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <span>

#include "error.hpp"
#include "merge/aux_timecodes.hpp"
#include "merge/logging_fields.hpp"
#include "merge/markers.hpp"
#include "merge/merge_document.hpp"
#include "merge/merge_observer.hpp"
#include "merge/resolve_clip_timing.hpp"
#include "merge/subclips.hpp"
#include "sheet/columns.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {

namespace {

const FrameRates& frame_rates(const Host& host) {
  return host.frame_rates ? host.frame_rates() : FRAME_RATES;
}

void make_copies(ClipMatch& match, MergeRun& run) {
  make_subclip_copies(match, run.host.rules);
  run.report.subclips_made += match.copy_count();
}

// The matched clip's timing, resolved the first time it is asked for.
const ClipTiming& clip_timing(const ClipMatch& match, const MergeRun& run,
                              std::optional<ClipTiming>& timing) {
  if (!timing) {
    timing = resolve_clip_timing(match.clip, frame_rates(run.host), run.host.rules, run.files);
  }
  return *timing;
}

// Whether the earlier subclip is the one row position j cuts: it has the row's Subclip Name, or,
// for a row without one, the span of its In and Out in the clip's media.
bool cut_for_row(Element subclip, std::size_t j, const ClipMatch& match, const MergeRun& run,
                 std::optional<ClipTiming>& timing) {
  const LogRow& row = run.rows[match.rows[j]];
  const std::string* name = row.field(kSubclipNameHeader);
  if (name && !name->empty()) return subclip.first("name").text() == *name;
  const ClipTiming& resolved = clip_timing(match, run, timing);
  if (!resolved.rate) return false;
  return is_cut_at(subclip,
                   FrameSpan{frame_in_clip(*row.field(kInHeader), resolved),
                             frame_in_clip(*row.field(kOutHeader), resolved)},
                   read_clip_duration(match.clip));
}

// Whether the row's In and Out cut no subclip out of the clip's media: a point that is no
// timecode, an Out before the In, or either outside the media.
bool cuts_impossibly(const LogRow& row, const ClipTiming& timing, std::int64_t clip_duration) {
  const std::string& in = *row.field(kInHeader);
  const std::string& out = *row.field(kOutHeader);
  if (!is_timecode(in, timing.timebase) || !is_timecode(out, timing.timebase)) return true;
  const FrameSpan span{frame_in_clip(in, timing), frame_in_clip(out, timing)};
  return span.last < span.first || span.first < 0 || span.last >= clip_duration;
}

// Takes the rows whose subclip cannot be cut out of those that get one, numbering the others'
// copies again.
void leave_out_impossible_subclips(ClipMatch& match, const MergeRun& run,
                                   std::optional<ClipTiming>& resolved) {
  const ClipTiming& timing = clip_timing(match, run, resolved);
  if (!timing.rate) return;
  const std::int64_t clip_duration = read_clip_duration(match.clip);
  std::size_t copies = 0;
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    if (match.copy_numbers[j] == 0) continue;
    if (cuts_impossibly(run.rows[match.rows[j]], timing, clip_duration)) {
      match.left_out.resize(match.rows.size());
      match.left_out[j] = true;
      match.copy_numbers[j] = 0;
    } else {
      match.copy_numbers[j] = ++copies;
    }
  }
}

// The placement of a row left out, for an observer: where its subclip would have lain.
void observe_left_out_row(const ClipMatch& match, std::size_t j, MergeRun& run) {
  ++run.report.rows_not_fully_applied;
  if (!run.observer) return;
  const LogRow& row = run.rows[match.rows[j]];
  const ClipTiming timing =
      resolve_clip_timing(match.clip, frame_rates(run.host), run.host.rules, run.files);
  const std::int64_t clip_duration = read_clip_duration(match.clip);
  RowPlacement placement = place_row(row, match.clip, timing, true);
  placement.row_left_out = true;
  run.observer->row_placed(match, j, timing, clip_duration, placement);
}

// The subclips the rows cut beside the clip: those earlier merges cut, and new copies.
void place_subclips_beside(ClipMatch& match, MergeRun& run, std::optional<ClipTiming>& timing) {
  std::span<const Element> earlier;
  if (run.earlier && match.id) {
    if (const auto found = run.earlier->find(*match.id); found != run.earlier->end()) {
      earlier = found->second;
    }
  }
  make_subclip_copies(match, run.host.rules, earlier, [&](Element subclip, std::size_t j) {
    return cut_for_row(subclip, j, match, run, timing);
  });
  run.report.subclips_made += static_cast<std::size_t>(std::ranges::count(match.reused, false)) - 1;
}

// The row at row position j of the clip, applied to its target clip.
void apply_row(ClipMatch& match, std::size_t j, MergeRun& run) {
  const LogRow& row = run.rows[match.rows[j]];
  const Rules& rules = run.host.rules;
  if (run.observer) run.observer->row_started(match, j);
  if (match.leaves_out(j)) return observe_left_out_row(match, j, run);
  if (!match.clip_item) clear_empty_in_out(row, match.target(j), rules);
  if (match.several && j == 0 && !match.kept_whole) make_copies(match, run);
  if (match.beyond_position_limit) return;

  const Element target = match.target(j);
  const ClipTiming timing = resolve_clip_timing(target, frame_rates(run.host), rules, run.files);
  // A subclip beside the clip is cut from the clip's whole length, even one an earlier merge cut.
  const std::int64_t clip_duration = read_clip_duration(match.kept_whole ? match.clip : target);
  RowPlacement placement = place_row(row, target, timing, match.makes_subclip(j), match.clip_item);
  placement.aux = place_aux(target, timing, rules, run.files);
  placement.skips_present_markers = rules.merge_again_in_place;
  if (rules.leave_out_impossible_values) {
    leave_out_impossible_markers(placement, row, timing, clip_duration);
  }
  if (run.observer) run.observer->row_placed(match, j, timing, clip_duration, placement);
  if (match.makes_subclip(j)) apply_subclip(row, target, placement, timing, clip_duration, rules);
  apply_logging_fields(target, row, run.document, rules);
  run.report.markers_added += apply_markers(row, placement, timing);
  const bool markers_left_out =
      std::ranges::find(placement.markers_left_out, true) != placement.markers_left_out.end();
  const std::size_t aux_left_out = apply_aux_timecodes(placement.aux, row, timing);
  if (markers_left_out || aux_left_out > 0) ++run.report.rows_not_fully_applied;
}

// The subclips the rows cut that the document did not have.
CutClip cut_clip_of(const ClipMatch& match) {
  CutClip cut{.name = match.name, .kept_whole = match.kept_whole};
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    if (match.makes_subclip(j) && !match.updates_earlier(j)) {
      cut.subclips.push_back(match.target(j).first("name").text());
    }
  }
  return cut;
}

// The error again, naming the clip and the sheet row in its message and its fields.
Error in_row(const Error& error, const ClipMatch& match, const LogRow& row) {
  Error wrapped(fmt::format("clip \"{}\" ({}, sheet row {}): {}", match.name,
                            match.id ? "id " + *match.id : "no id", row.sheet_row, error.what()),
                error);
  wrapped.row = row.sheet_row;
  wrapped.clip = ClipRef{.name = match.name, .id = match.id};
  return wrapped;
}

// The rows no master clip took that name the clip item, by its own name or its file's.
std::vector<std::size_t> rows_of_item(Element item, const std::vector<bool>& taken,
                                      const MergeRun& run, std::string& name) {
  const Element own_name = item.child("name");
  for (std::string candidate :
       {own_name ? own_name.text() : std::string(), file_stem(item, run.files)}) {
    const auto found = run.index.find(candidate);
    if (candidate.empty() || found == run.index.end()) continue;
    std::vector<std::size_t> rows;
    for (std::size_t row : found->second) {
      if (!taken[row]) rows.push_back(row);
    }
    if (rows.empty()) continue;
    name = std::move(candidate);
    return rows;
  }
  return {};
}

}  // namespace

bool in_sequence(Element element) {
  for (Element up = element.parent(); up; up = up.parent()) {
    if (up.name() == "sequence") return true;
  }
  return false;
}

std::string file_stem(Element item, const DescribedFiles* files) {
  const Element file = described_file(item, files);
  const Element name = file ? file.first("name") : Element();
  if (!name) return {};
  std::string stem = name.text();
  return stem.substr(0, stem.rfind('.'));
}

RowsByName index_rows_by_name(const std::vector<LogRow>& rows) {
  RowsByName index;
  for (std::size_t position = 0; position < rows.size(); ++position) {
    if (const std::string* name = rows[position].field(kNameHeader))
      index[*name].push_back(position);
  }
  return index;
}

std::optional<ClipMatch> match_clip(Element clip, const RowsByName& index,
                                    const std::vector<LogRow>& rows, const Rules& rules) {
  ClipMatch match;
  match.clip = clip;
  match.id = clip.attribute("id");
  const Element name = clip.first("name");
  if (!name) return std::nullopt;
  match.name = name.text();
  if (auto found = index.find(match.name); found != index.end()) match.rows = found->second;
  match.several = match.rows.size() > 1;
  match.kept_whole = rules.subclips_beside_master_clip;
  match.clips = {clip};
  match.reused = {false};
  std::size_t copies = 0;
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    const bool copied =
        match.kept_whole ? match.several && cuts_subclip(rows[match.rows[j]]) : j > 0;
    match.copy_numbers.push_back(copied ? ++copies : 0);
  }
  return match;
}

void visit_clip(Element clip, std::size_t position, MergeRun& run) {
  ++run.report.clips_visited;
  std::optional<ClipMatch> match = match_clip(clip, run.index, run.rows, run.host.rules);
  if (match) {
    match->beyond_position_limit = run.host.rules.position_limit && position >= run.rows.size();
  }
  // Subclips beside the clip are taken from it as the document has it, before any row; under the
  // classic rules, once its first row has cleared its In and Out.
  if (match && match->kept_whole && match->copy_count() > 0) {
    const auto first_cut =
        std::ranges::find_if(match->copy_numbers, [](std::size_t copy) { return copy != 0; });
    const auto j = static_cast<std::size_t>(first_cut - match->copy_numbers.begin());
    try {
      // The clip's timing, resolved once for both.
      std::optional<ClipTiming> timing;
      if (run.host.rules.leave_out_impossible_values) {
        leave_out_impossible_subclips(*match, run, timing);
      }
      if (match->copy_count() > 0) place_subclips_beside(*match, run, timing);
    } catch (const Error& error) {
      throw in_row(error, *match, run.rows[match->rows[j]]);
    }
  }
  if (run.observer && match) run.observer->clip_matched(*match, position);
  if (!match || match->rows.empty()) return;

  ++run.report.clips_changed;
  for (std::size_t j = 0; j < match->rows.size(); ++j) {
    const std::size_t row = match->rows[j];
    run.row_used[row] = true;
    try {
      apply_row(*match, j, run);
    } catch (const Error& error) {
      throw in_row(error, *match, run.rows[row]);
    }
  }
  if (CutClip cut = cut_clip_of(*match); !cut.subclips.empty()) {
    run.report.cut_clips.push_back(std::move(cut));
  }
}

void visit_clip_items(const Document& document, MergeRun& run) {
  const std::vector<bool> taken = run.row_used;  // by master clips
  // A bin whose master clips took every row that names anything has no item to look at.
  bool rows_left = false;
  for (std::size_t row = 0; row < taken.size() && !rows_left; ++row) {
    rows_left = !taken[row] && !is_blank(run.rows[row]);
  }
  if (!rows_left) return;
  for (Element item : document.all("clipitem")) {
    if (!in_sequence(item)) continue;
    std::string name;
    const std::vector<std::size_t> rows = rows_of_item(item, taken, run, name);
    if (rows.empty()) continue;
    ++run.report.clip_items_logged;
    for (std::size_t row : rows) {
      ClipMatch match{.clip = item,
                      .id = item.attribute("id"),
                      .name = name,
                      .rows = {row},
                      .clip_item = true,
                      .clips = {item},
                      .copy_numbers = {0},
                      .reused = {false}};
      if (run.observer) run.observer->clip_item_matched(match);
      run.row_used[row] = true;
      try {
        apply_row(match, 0, run);
      } catch (const Error& error) {
        throw in_row(error, match, run.rows[row]);
      }
    }
  }
}

}  // namespace pellago
