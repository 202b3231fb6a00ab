#include "merge/clip_match.hpp"

#include <fmt/format.h>

#include "error.hpp"
#include "merge/aux_timecodes.hpp"
#include "merge/logging_fields.hpp"
#include "merge/markers.hpp"
#include "merge/merge_observer.hpp"
#include "merge/resolve_clip_timing.hpp"
#include "merge/subclips.hpp"
#include "sheet/columns.hpp"

namespace pellago {

namespace {

const FrameRates& frame_rates(const Host& host) {
  return host.frame_rates ? host.frame_rates() : FRAME_RATES;
}

// The row at row position j of the clip, applied to its target clip (match.clips[j]).
void apply_row(ClipMatch& match, std::size_t j, MergeRun& run) {
  const LogRow& row = run.rows[match.rows[j]];
  const Element target = match.clips[j];
  if (run.observer) run.observer->row_started(match, j);
  clear_empty_in_out(row, target, run.host.rules);
  if (match.several && j == 0) {
    make_subclip_copies(match);
    run.report.subclips_made += match.clips.size() - 1;
  }
  if (match.beyond_position_limit) return;

  const ClipTiming timing =
      resolve_clip_timing(target, frame_rates(run.host), run.host.rules, run.files);
  const std::int64_t clip_duration = read_clip_duration(target);
  const RowPlacement placement = place_row(row, target, timing, match.several);
  if (run.observer) run.observer->row_placed(match, j, timing, clip_duration, placement);
  if (match.several) apply_subclip(row, target, placement, timing, clip_duration);
  apply_logging_fields(target, row, run.document, run.host.rules);
  apply_markers(row, placement, timing);
  run.report.markers_added += row.markers.size();
  apply_aux_timecodes(target, row, timing);
}

CutClip cut_clip_of(const ClipMatch& match) {
  CutClip cut{.name = match.name};
  for (Element target : match.clips) cut.subclips.push_back(target.first("name").text());
  return cut;
}

// The error again, naming the clip and the sheet row in its message and its fields.
Error in_row(const Error& error, const ClipMatch& match, std::size_t row) {
  Error wrapped(fmt::format("clip \"{}\" ({}, sheet row {}): {}", match.name,
                            match.id ? "id " + *match.id : "no id", sheet_row(row), error.what()),
                error);
  wrapped.row = sheet_row(row);
  wrapped.clip = ClipRef{.name = match.name, .id = match.id};
  return wrapped;
}

}  // namespace

RowsByName index_rows_by_name(const std::vector<LogRow>& rows) {
  RowsByName index;
  for (std::size_t position = 0; position < rows.size(); ++position) {
    if (const std::string* name = rows[position].field(kNameHeader))
      index[*name].push_back(position);
  }
  return index;
}

std::optional<ClipMatch> match_clip(Element clip, const RowsByName& index) {
  ClipMatch match;
  match.clip = clip;
  match.id = clip.attribute("id");
  const Element name = clip.first("name");
  if (!name) return std::nullopt;
  match.name = name.text();
  if (auto found = index.find(match.name); found != index.end()) match.rows = found->second;
  match.several = match.rows.size() > 1;
  match.clips = {clip};
  return match;
}

void visit_clip(Element clip, std::size_t position, MergeRun& run) {
  ++run.report.clips_visited;
  std::optional<ClipMatch> match = match_clip(clip, run.index);
  if (match) {
    match->beyond_position_limit = run.host.rules.position_limit && position >= run.rows.size();
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
      throw in_row(error, *match, row);
    }
  }
  if (match->several) run.report.cut_clips.push_back(cut_clip_of(*match));
}

}  // namespace pellago
