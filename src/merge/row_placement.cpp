#include "merge/row_placement.hpp"

#include "sheet/columns.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {

namespace {

bool holds_text(const std::string* value) { return value && !value->empty(); }

}  // namespace

std::int64_t frame_in_clip(const std::string& timecode, const ClipTiming& timing) {
  return to_frames(timecode, rate_entry(timing).fcp_rate, timing.display_format) -
         timing.start_frame;
}

std::string timecode_in_clip(std::int64_t frame, const ClipTiming& timing) {
  return to_timecode(timing.start_frame + frame, rate_entry(timing).fcp_rate,
                     timing.display_format);
}

RowPlacement place_row(const LogRow& row, Element clip, const ClipTiming& timing, bool several,
                       bool clip_item) {
  RowPlacement placement;
  placement.markers_after_name = clip_item ? "file" : "media";
  if (!row.markers.empty()) placement.markers_after = clip.first(placement.markers_after_name);
  if (!timing.rate) return placement;
  const std::string* in = row.field(kInHeader);
  const std::string* out = row.field(kOutHeader);
  if (several && holds_text(in) && holds_text(out)) {
    placement.subclip = FrameSpan{frame_in_clip(*in, timing), frame_in_clip(*out, timing)};
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
