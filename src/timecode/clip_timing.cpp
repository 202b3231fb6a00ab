#include "timecode/clip_timing.hpp"

#include <fmt/format.h>

#include "error.hpp"

namespace pellago {

const FrameRate& rate_entry(const ClipTiming& timing) {
  if (!timing.rate) {
    // The ntsc text is quoted with escapes, so that a stray line break or blank shows.
    throw Error(fmt::format("timebase {} with ntsc {:?} is not one of the known frame rates",
                            timing.timebase, timing.ntsc));
  }
  return *timing.rate;
}

}  // namespace pellago
