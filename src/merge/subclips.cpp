#include "merge/subclips.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "error.hpp"
#include "merge/clip_layout.hpp"
#include "merge/required_element.hpp"
#include "sheet/columns.hpp"
#include "timecode/read_integer.hpp"

namespace pellago {

namespace {

void set_if_present(Element scope, std::string_view selector, std::string_view text) {
  if (Element found = scope.first(selector)) found.set_text(text);
}

bool is_empty_cell(const std::string* value) { return value && value->empty(); }

bool holds_text(const std::string* value) { return value && !value->empty(); }

constexpr Selector kIn = name_chain("in");
constexpr Selector kOut = name_chain("out");
constexpr Selector kMasterClipId = name_chain("masterclipid");
static_assert(has_place(kIn.text) && has_place(kOut.text) && has_place(kMasterClipId.text));

// The first `selector` below `scope`. Without one, throws as `required` does, unless the rules
// create missing elements: then it is none, and the caller adds or skips it.
Element found_or_required(Element scope, std::string_view selector, std::string_view purpose,
                          const Rules& rules) {
  const Element found = scope.first(selector);
  if (found || rules.create_missing_elements) return found;
  return require_found(found, selector, purpose);
}

// Sets the clip's first in (out) to -1, adding one when it has none and the rules allow.
void clear_point(Element clip, const Selector& point, std::string_view purpose,
                 const Rules& rules) {
  if (Element found = found_or_required(clip, point.text, purpose, rules)) {
    found.set_text("-1");
  } else {
    add_in_place(clip, point, "-1");
  }
}

void clear_point_if_empty(const LogRow& row, Element clip, std::string_view column,
                          const Selector& point, const Rules& rules) {
  if (!is_empty_cell(row.field(column))) return;
  clear_point(clip, point, fmt::format(" to clear for the empty \"{}\" cell", column), rules);
  set_if_present(clip, fmt::format("media/audio/{}", point.text), "-1");
}

std::string copy_clip_item_id(const std::string& base, std::size_t copy, std::size_t item) {
  return fmt::format("{} clipitem0{}{}", base, copy, item);
}

// Copies beside the clip are for reading too: what is taken out leaves no empty line.
void remove_element(Element element, const Rules& rules) {
  if (rules.subclips_beside_master_clip) {
    element.remove_line();
  } else {
    element.remove();
  }
}

void remove_links(Element clip, const Rules& rules) {
  for (Element link : clip.all("link")) remove_element(link, rules);
}

// Gives a fresh copy of the matched clip its own ids, with no uuid.
void rename_copy(const ClipMatch& match, Element copy, std::size_t copy_number,
                 const Rules& rules) {
  if (Element uuid = found_or_required(copy, "uuid", " to leave out of its copies", rules)) {
    remove_element(uuid, rules);
  }
  const std::string id = copy_id(match, copy_number);
  copy.set_attribute("id", id);
  if (Element master = found_or_required(copy, kMasterClipId.text,
                                         " to point its copies at themselves", rules)) {
    master.set_text(id);
  } else {
    add_in_place(copy, kMasterClipId, id);
  }
  const std::string base = match.id.value_or(match.name);
  std::size_t item_number = 0;
  for (Element item : copy.all("clipitem")) {
    item.set_attribute("id", copy_clip_item_id(base, copy_number, item_number++));
    for (Element master : item.all("masterclipid")) master.set_text(id);
  }
}

// Frame counts of one subclip, relative to the clip's media.
struct SubclipFrames {
  std::int64_t duration;
  std::int64_t start_offset;
  std::int64_t end_offset;
};

SubclipFrames subclip_frames(const FrameSpan& span, std::int64_t clip_duration) {
  const std::int64_t first = span.first;
  const std::int64_t end = span.last + 1;
  return {end - first, std::max<std::int64_t>(first, 0),
          std::max<std::int64_t>(clip_duration - end - 1, 0)};
}

void cut_clip(Element clip, std::int64_t duration, const Rules& rules) {
  required(clip, "duration").set_text(std::to_string(duration));
  clear_point(clip, kIn, " to clear for the subclip", rules);
  clear_point(clip, kOut, " to clear for the subclip", rules);
  set_if_present(clip, "media/audio/in", "-1");
  set_if_present(clip, "media/audio/out", "-1");
}

std::string describe_clip_item(Element item, std::size_t ordinal) {
  if (std::optional<std::string> id = item.attribute("id")) {
    return fmt::format(" in its track clip item \"{}\"", *id);
  }
  return fmt::format(" in its track clip item {}", ordinal);
}

void cut_track_clip_item(Element item, std::size_t ordinal, const std::string& name,
                         const SubclipFrames& frames, const Rules& rules) {
  const std::string duration = std::to_string(frames.duration);
  const std::array<std::pair<std::string_view, std::string_view>, 6> contents{{
      {"name", name},
      {"duration", duration},
      {"in", "0"},
      {"out", duration},
      {"start", "0"},
      {"end", duration},
  }};
  const std::string where = describe_clip_item(item, ordinal);
  for (const auto& [selector, text] : contents) {
    if (Element found = found_or_required(item, selector, where, rules)) {
      found.set_text(text);
    } else {
      add_child_in_order(item, kClipItemChildren, selector, text);
    }
  }
  // An earlier merge's subclipinfo is set again, where the rules update it in place.
  if (const Element earlier = item.child("subclipinfo"); earlier && rules.merge_again_in_place) {
    for (const auto& [name, offset] : {std::pair{"startoffset", frames.start_offset},
                                       std::pair{"endoffset", frames.end_offset}}) {
      if (const Element held = earlier.child(name)) held.set_text(std::to_string(offset));
    }
    return;
  }
  // <subclipinfo> <startoffset>S</startoffset> <endoffset>E</endoffset> </subclipinfo>
  const Element info = item.create_element("subclipinfo");
  info.append_text(" ");
  info.append_element("startoffset", std::to_string(frames.start_offset));
  info.append_text(" ");
  info.append_element("endoffset", std::to_string(frames.end_offset));
  info.append_text(" ");
  item.first("end").insert_after(info);
}

}  // namespace

std::string copy_id(const std::string& clip_id, std::size_t copy) {
  return fmt::format("{} clip0{}", clip_id, copy);
}

std::string id_copied_from(const std::string& id) {
  const std::size_t at = id.rfind(" clip0");
  if (at == std::string::npos || at + 6 >= id.size() || id[at + 6] < '0' || id[at + 6] > '9') {
    return id;
  }
  return id.substr(0, at);
}

bool cuts_subclip(const LogRow& row) {
  return holds_text(row.field(kInHeader)) && holds_text(row.field(kOutHeader));
}

std::string copy_id(const ClipMatch& match, std::size_t copy) {
  return copy_id(match.id.value_or(match.name), copy);
}

void clear_empty_in_out(const LogRow& row, Element clip, const Rules& rules) {
  clear_point_if_empty(row, clip, kInHeader, kIn, rules);
  clear_point_if_empty(row, clip, kOutHeader, kOut, rules);
}

void make_subclip_copies(ClipMatch& match, const Rules& rules, std::span<const Element> earlier,
                         const SubclipWanted& wanted) {
  const bool beside = rules.subclips_beside_master_clip;
  if (!beside) remove_links(match.clip, rules);
  if (!match.id && !rules.create_missing_elements) {
    throw Error("no id attribute to build the ids of its subclip copies from");
  }
  const Element parent = match.clip.parent();
  if (!parent)
    throw Error("it is the document's root element, so its subclip copies have no place");
  std::unordered_set<std::string> ids_in_use;
  Element last = match.clip;  // the new copies follow the clip and the subclips beside it
  for (Element subclip : earlier) {
    ids_in_use.insert(subclip.attribute("id").value_or(""));
    if (subclip.parent() == parent) last = subclip;
  }
  std::vector<bool> taken(earlier.size());
  std::size_t copy_number = 0;
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    if (match.copy_numbers[j] == 0) continue;
    std::size_t found = 0;
    while (found < earlier.size() && (taken[found] || !wanted || !wanted(earlier[found], j))) {
      ++found;
    }
    if (found < earlier.size()) {
      taken[found] = true;
      match.clips.push_back(earlier[found]);
      match.reused.push_back(true);
      continue;
    }
    do {
      ++copy_number;
    } while (ids_in_use.contains(copy_id(match, copy_number)));
    const Element copy = beside ? last.insert_after_on_own_line(match.clip.copy())
                                : parent.append_child(match.clip.copy());
    last = copy;
    if (beside) {
      remove_links(copy, rules);
      // Named as Final Cut Pro 7 names a new subclip, until the row gives it a name.
      required(copy, "name").set_text(match.name + " Subclip");
    }
    rename_copy(match, copy, copy_number, rules);
    match.clips.push_back(copy);
    match.reused.push_back(false);
  }
}

EarlierSubclips earlier_subclips(const std::vector<Element>& clips) {
  EarlierSubclips earlier;
  for (Element clip : clips) {
    const std::optional<std::string> id = clip.attribute("id");
    if (!id) continue;
    std::string original = id_copied_from(*id);
    if (original != *id) earlier[std::move(original)].push_back(clip);
  }
  return earlier;
}

bool is_cut_at(Element subclip, const FrameSpan& span, std::int64_t clip_duration) {
  const Element offset = subclip.first("track/clipitem/subclipinfo/startoffset");
  const Element duration = subclip.first("duration");
  const SubclipFrames frames = subclip_frames(span, clip_duration);
  return offset && duration && read_integer(offset.text()) == frames.start_offset &&
         read_integer(duration.text()) == frames.duration;
}

std::int64_t read_clip_duration(Element clip) {
  return read_integer(required(clip, "duration").text());
}

void apply_subclip(const LogRow& row, Element clip, const RowPlacement& placement,
                   const ClipTiming& timing, std::int64_t clip_duration, const Rules& rules) {
  const Element clip_name = required(clip, "name");
  const std::string* subclip_name = row.field(kSubclipNameHeader);
  if (holds_text(subclip_name)) clip_name.set_text(*subclip_name);
  if (!cuts_subclip(row)) return;

  const SubclipFrames frames = subclip_frames(planned(placement.subclip, timing), clip_duration);
  cut_clip(clip, frames.duration, rules);
  const std::string item_name = rules.subclips_beside_master_clip ? clip_name.text()
                                : subclip_name                    ? *subclip_name
                                                                  : std::string();
  std::size_t ordinal = 0;
  for (Element item : clip.all("track/clipitem")) {
    cut_track_clip_item(item, ++ordinal, item_name, frames, rules);
  }
}

}  // namespace pellago
