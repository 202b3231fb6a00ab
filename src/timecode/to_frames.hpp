#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pellago {

// Frame count of a timecode written by a person ("01:00:00;00", "01.00.00.12", "1000012.0", "250")
// at `rate` frames per second (rounded half away from zero). display_format "DF" selects
// drop-frame counting; any other text counts plainly. Never rejects a text.
//
// Beyond any real timecode: fields that overflow 64 bits saturate, the total is clamped to the
// 64-bit range, a NaN rate counts as 0 and the frame base is clamped to +-2^40.
std::int64_t to_frames(std::string_view timecode, double rate, std::string_view display_format);

// Whether the text is a timecode as a log sheet writes one, at `frame_base` frames per second:
// hours, minutes, seconds and frames separated by ":", ";" or "." (hours may be left out), with
// minutes and seconds below 60 and frames below the frame base; the text of a number cell
// ("1000012.0" for 01:00:00:12); or a bare frame count. Blanks around it are allowed. Other texts
// ("TBD", "10h", "1:2:3:4:5", "00:00:30" at 25) still convert; this tells them apart.
bool is_timecode(std::string_view text, std::int64_t frame_base);

// The runs of digits and other characters between ":", ";" and "." separators, empty ones
// included: {"10", "00", "05"} for "10:00:05".
std::vector<std::string> timecode_fields(std::string_view text);

// Whether the text holds no decimal digit at all: to_frames reads it as 0.
bool has_no_digits(std::string_view text);

// "10:00:05:00" for frame 900125 at frame base 25; drop-frame counting ("01:00:00;00" for 107892
// at 30) when drop_frame. The inverse of to_frames for counts from 0; a negative count gets a
// leading "-".
std::string format_timecode(std::int64_t frames, std::int64_t frame_base, bool drop_frame);

}  // namespace pellago
