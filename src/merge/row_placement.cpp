#include "merge/row_placement.hpp"

#include "merge/subclips.hpp"
#include "sheet/columns.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {

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
    placement.markers_after = clip.first_xpath("./file");
    if (!placement.markers_after) placement.markers_after = clip.first_xpath("./*[last()]");
  }
  if (!timing.rate) return placement;
  if (makes_subclip && cuts_subclip(row)) {
    placement.subclip = FrameSpan{frame_in_clip(*row.field(kInHeader), timing),
                                  frame_in_clip(*row.field(kOutHeader), timing)};
  }
  if (!row.markers.empty()) {
    std::vector<std::int64_t>& frames = placement.marker_frames.emplace();
    for (const MarkerEntry& marker : row.markers) {
      frames.push_back(frame_in_clip(marker.timecode, timing));
    }
  }
  return placement;
}

}  // namespace pellago
