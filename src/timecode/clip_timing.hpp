#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "document/document.hpp"
#include "timecode/frame_rate.hpp"

namespace pellago {

// Timing of one target clip, read from its first rate/timebase, rate/ntsc, displayformat and
// frame elements (first in document order at any depth below the clip).
struct ClipTiming {
  std::int64_t timebase = 0;
  std::string ntsc;
  std::string display_format = "NDF";
  std::optional<FrameRate> rate;  // none when (timebase, ntsc) is not in the table
  std::int64_t start_frame = 0;
};

// Throws Error naming the missing element ("no <rate><timebase> element") when the clip has no
// rate/timebase or no rate/ntsc; the caller adds which clip it was.
ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates);

// The clip's rate entry; throws Error saying that its timebase and ntsc are not a known frame rate
// when it has none. Converting the clip's in, out and marker timecodes needs it.
const FrameRate& rate_entry(const ClipTiming& timing);

}  // namespace pellago
