#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "timecode/frame_rate.hpp"

namespace pellago {

// Timing of one target clip: its timebase and NTSC word, its display format, the frame-rate entry
// they name and the frame its media starts at.
struct ClipTiming {
  std::int64_t timebase = 0;
  std::string ntsc;
  std::string display_format = "NDF";
  std::optional<FrameRate> rate;  // none when (timebase, ntsc) is not in the table
  std::int64_t start_frame = 0;
};

// The clip's rate entry; throws Error saying that its timebase and ntsc are not a known frame rate
// when it has none. Converting the clip's in, out and marker timecodes needs it.
const FrameRate& rate_entry(const ClipTiming& timing);

}  // namespace pellago
