#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pellago {

// Whether a clip's display format counts in drop frames: exactly "DF". Every other text, a
// lower-case "df" included, counts every frame.
bool counts_drop_frames(std::string_view display_format);

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

// The timecode text of a frame count, the inverse of to_frames at the same rate and display
// format: to_frames(to_timecode(f, r, d), r, d) == f for every f. "HH:MM:SS:FF", or "HH:MM:SS;FF"
// in drop-frame counting ("DF"), which skips the frame labels that to_frames never counts; hours go
// on past 99. A negative count, or a rate whose frame base is not positive, is written as the
// plain count ("-12"), which to_frames reads as a frame count at any rate.
std::string to_timecode(std::int64_t frames, double rate, std::string_view display_format);

}  // namespace pellago
