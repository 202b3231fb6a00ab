#pragma once

#include "document/document.hpp"
#include "timecode/clip_timing.hpp"
#include "timecode/frame_rate.hpp"

namespace pellago {

// The timing of a target clip, read from its first rate/timebase, rate/ntsc, displayformat and
// frame elements (first in document order at any depth below the clip). Throws Error naming the
// missing element ("no <rate><timebase> element") when the clip has no rate/timebase or no
// rate/ntsc; the caller adds which clip it was.
ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates);

}  // namespace pellago
