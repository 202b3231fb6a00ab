#pragma once

#include <cstdint>
#include <string_view>

namespace pellago {

// Frame count of a timecode written by a person ("01:00:00;00", "01.00.00.12", "1000012.0", "250")
// at `rate` frames per second (rounded half away from zero). display_format "DF" selects
// drop-frame counting; any other text counts plainly. Never rejects a text.
std::int64_t to_frames(std::string_view timecode, double rate, std::string_view display_format);

}  // namespace pellago
