#include "merge/row_placement.hpp"

#include <fmt/format.h>

#include "merge/subclips.hpp"
#include "sheet/columns.hpp"
#include "timecode/read_integer.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {

namespace {

// Whether the element holding `anchor` has a marker of its own at `frame` named `name`.
bool has_marker(Element anchor, std::int64_t frame, const std::string& name) {
  if (!anchor) return false;
  const Element holder = anchor.parent();
  for (Element marker : holder.children("marker")) {
    const Element in = marker.first("in");
    const Element marker_name = marker.first("name");
    if (in && marker_name && read_integer(in.text()) == frame && marker_name.text() == name) {
      return true;
    }
  }
  return false;
}

}  // namespace

void leave_out_impossible_markers(RowPlacement& placement, const LogRow& row,
                                  const ClipTiming& timing, std::int64_t clip_duration) {
  if (!placement.marker_frames) return;
  for (std::size_t i = 0; i < row.markers.size(); ++i) {
    const std::int64_t frame = (*placement.marker_frames)[i];
    const bool impossible = !is_timecode(row.markers[i].timecode, timing.timebase) || frame < 0 ||
                            frame >= clip_duration;
    if (!impossible) continue;
    placement.markers_left_out.resize(row.markers.size());
    placement.markers_left_out[i] = true;
  }
}

std::string marker_name(const MarkerEntry& marker, std::size_t index) {
  return marker.name ? *marker.name : fmt::format("Marker {}", index + 1);
}

std::int64_t frame_in_clip(const std::string& timecode, const ClipTiming& timing) {
  return to_frames(timecode, rate_entry(timing).fcp_rate, timing.display_format) -
         timing.start_frame;
}

std::string timecode_in_clip(std::int64_t frame, const ClipTiming& timing) {
  return to_timecode(timing.start_frame + frame, rate_entry(timing).fcp_rate,
                     timing.display_format);
}

RowPlacement place_row(const LogRow& row, Element clip, const ClipTiming& timing,
                       bool makes_subclip, bool clip_item) {
  RowPlacement placement;
  placement.markers_after_name = clip_item ? "file" : "media";
  if (!row.markers.empty() && !clip_item) placement.markers_after = clip.first("media");
  // A clip item takes them after its own file; without one (a nested sequence, a generator), at
  // its end.
  if (!row.markers.empty() && clip_item) {
    placement.markers_after = clip.child("file");
    if (!placement.markers_after) placement.markers_after = clip.last_child();
  }
  if (!timing.rate) return placement;
  if (makes_subclip && cuts_subclip(row)) {
    placement.subclip = FrameSpan{frame_in_clip(*row.field(kInHeader), timing),
                                  frame_in_clip(*row.field(kOutHeader), timing)};
  }
  if (!row.markers.empty()) {
    std::vector<std::int64_t>& frames = placement.marker_frames.emplace();
    for (std::size_t i = 0; i < row.markers.size(); ++i) {
      frames.push_back(frame_in_clip(row.markers[i].timecode, timing));
      placement.markers_present.push_back(
          has_marker(placement.markers_after, frames.back(), marker_name(row.markers[i], i)));
    }
  }
  return placement;
}

}  // namespace pellago
