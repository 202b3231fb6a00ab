#include "merge/subclips.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
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
static_assert(has_place(kIn.text) && has_place(kOut.text));

void clear_point_if_empty(const LogRow& row, Element clip, std::string_view column,
                          const Selector& point, const Rules& rules) {
  if (!is_empty_cell(row.field(column))) return;
  const Element found = clip.first(point);
  if (!found && rules.create_missing_elements) {
    add_in_place(clip, point, "-1");
  } else {
    require_found(found, point.text, fmt::format(" to clear for the empty \"{}\" cell", column))
        .set_text("-1");
  }
  set_if_present(clip, fmt::format("media/audio/{}", point.text), "-1");
}

std::string copy_clip_item_id(const std::string& clip_id, std::size_t copy, std::size_t item) {
  return fmt::format("{} clipitem0{}{}", clip_id, copy, item);
}

Element append_renamed_copy(const ClipMatch& match, Element parent, std::size_t copy_number) {
  Element copy = parent.append_child(match.clip.copy());
  required(copy, "uuid", " to leave out of its copies").remove();
  const std::string id = copy_id(*match.id, copy_number);
  copy.set_attribute("id", id);
  required(copy, "masterclipid", " to point its copies at themselves").set_text(id);
  std::size_t item_number = 0;
  for (Element item : copy.all("clipitem")) {
    item.set_attribute("id", copy_clip_item_id(*match.id, copy_number, item_number++));
    for (Element master : item.all("masterclipid")) master.set_text(id);
  }
  return copy;
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

void cut_clip(Element clip, std::int64_t duration) {
  required(clip, "duration").set_text(std::to_string(duration));
  required(clip, "in", " to clear for the subclip").set_text("-1");
  required(clip, "out", " to clear for the subclip").set_text("-1");
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
                         const SubclipFrames& frames) {
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
  for (const auto& [selector, text] : contents) required(item, selector, where).set_text(text);
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

void clear_empty_in_out(const LogRow& row, Element clip, const Rules& rules) {
  clear_point_if_empty(row, clip, kInHeader, kIn, rules);
  clear_point_if_empty(row, clip, kOutHeader, kOut, rules);
}

void make_subclip_copies(ClipMatch& match) {
  for (Element link : match.clip.all("link")) link.remove();
  if (!match.id) throw Error("no id attribute to build the ids of its subclip copies from");
  const Element parent = match.clip.parent();
  if (!parent)
    throw Error("it is the document's root element, so its subclip copies have no place");
  for (std::size_t copy_number = 1; copy_number < match.rows.size(); ++copy_number) {
    match.clips.push_back(append_renamed_copy(match, parent, copy_number));
  }
}

std::int64_t read_clip_duration(Element clip) {
  return read_integer(required(clip, "duration").text());
}

void apply_subclip(const LogRow& row, Element clip, const RowPlacement& placement,
                   const ClipTiming& timing, std::int64_t clip_duration) {
  const std::string* subclip_name = row.field(kSubclipNameHeader);
  if (holds_text(subclip_name)) required(clip, "name").set_text(*subclip_name);
  const std::string* in = row.field(kInHeader);
  const std::string* out = row.field(kOutHeader);
  if (!holds_text(in) || !holds_text(out)) return;

  const SubclipFrames frames = subclip_frames(planned(placement.subclip, timing), clip_duration);
  cut_clip(clip, frames.duration);
  const std::string item_name = subclip_name ? *subclip_name : std::string();
  std::size_t ordinal = 0;
  for (Element item : clip.all("track/clipitem")) {
    cut_track_clip_item(item, ++ordinal, item_name, frames);
  }
}

}  // namespace pellago
