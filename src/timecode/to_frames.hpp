#pragma once

#include <cstdint>
#include <string_view>

namespace pellago {

// Frame count of a timecode written by a person ("01:00:00;00", "01.00.00.12", "1000012.0", "250")
// at `rate` frames per second (rounded half away from zero). display_format "DF" selects
// drop-frame counting; any other text counts plainly. Never rejects a text.
//
// Beyond any real timecode: fields that overflow 64 bits saturate, the total is clamped to the
// 64-bit range, a NaN rate counts as 0 and the frame base is clamped to +-2^40.
std::int64_t to_frames(std::string_view timecode, double rate, std::string_view display_format);

// Whether the text is written in one of the forms to_frames is made for: an optional sign, then one
// to four runs of digits separated by single ":", ";" or "." characters, blanks around allowed.
// Other texts ("TBD", "", "1:2:3:4:5", "01:00:00:") still convert; this tells them apart.
bool is_timecode(std::string_view text);

}  // namespace pellago
