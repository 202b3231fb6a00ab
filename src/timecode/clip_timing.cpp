#include "timecode/clip_timing.hpp"

#include <fmt/format.h>

#include "error.hpp"
#include "timecode/read_integer.hpp"

namespace pellago {

namespace {

Element required_element(Element clip, std::string_view selector, std::string_view description) {
  Element found = clip.first(selector);
  if (!found) throw Error(fmt::format("no {} element", description));
  return found;
}

}  // namespace

ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates) {
  ClipTiming timing;
  timing.timebase =
      read_integer(required_element(clip, "rate/timebase", "<rate><timebase>").text());
  timing.ntsc = required_element(clip, "rate/ntsc", "<rate><ntsc>").text();
  if (Element format = clip.first("displayformat")) timing.display_format = format.text();
  timing.rate = find_frame_rate(rates, timing.timebase, timing.ntsc);
  if (Element frame = clip.first("frame")) timing.start_frame = read_integer(frame.text());
  return timing;
}

const FrameRate& rate_entry(const ClipTiming& timing) {
  if (!timing.rate) {
    // The ntsc text is quoted with escapes, so that a stray line break or blank shows.
    throw Error(fmt::format("timebase {} with ntsc {:?} is not one of the known frame rates",
                            timing.timebase, timing.ntsc));
  }
  return *timing.rate;
}

}  // namespace pellago
