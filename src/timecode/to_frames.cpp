#include "timecode/to_frames.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "timecode/read_integer.hpp"
#include "timecode/trimmed.hpp"

namespace pellago {

namespace {

// Totals are computed exactly in 128 bits and clamped to 64 bits at the end: fields are at most
// 64-bit (read_integer saturates) and the frame base at most 2^40, so no product or sum below can
// come near the 128-bit limit.
using Wide = __int128;

constexpr std::int64_t kMaxFrameBase = std::int64_t{1} << 40;

struct TimecodeFields {
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  std::int64_t frames = 0;
};

// The rate rounded half away from zero. A rate that is no number counts as 0; rates beyond
// 2^40 frames per second (infinities included) are clamped to that.
std::int64_t frame_base(double rate) {
  if (std::isnan(rate)) return 0;
  const double limit = static_cast<double>(kMaxFrameBase);
  return static_cast<std::int64_t>(std::clamp(std::round(rate), -limit, limit));
}

// The timecode with a blank appended and every ";" and "." turned into ":".
std::string with_colons(std::string_view timecode) {
  std::string text(timecode);
  text += ' ';
  std::replace(text.begin(), text.end(), ';', ':');
  std::replace(text.begin(), text.end(), '.', ':');
  return text;
}

// Splits at every ":", keeping empty fields.
std::vector<std::string> split_fields(std::string_view text) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (std::size_t colon = text.find(':'); colon != std::string_view::npos;
       colon = text.find(':', start)) {
    fields.emplace_back(text.substr(start, colon - start));
    start = colon + 1;
  }
  fields.emplace_back(text.substr(start));
  return fields;
}

// Two fields are a number typed with a point ("1000012.0", "12.5"): the integer of the first,
// padded to even length, is cut into two-digit fields, and the second field follows them.
std::vector<std::string> split_two_field_number(const std::vector<std::string>& fields) {
  std::string digits = integer_text(fields[0]);
  if (digits.size() % 2 == 1) digits.insert(0, 1, '0');
  std::vector<std::string> pieces;
  for (std::size_t i = 0; i < digits.size(); i += 2) pieces.push_back(digits.substr(i, 2));
  pieces.push_back(fields[1]);
  return pieces;
}

// At most the first four fields, assigned from the end: frames, seconds, minutes, hours.
TimecodeFields assign_from_end(const std::vector<std::string>& fields) {
  const std::size_t count = std::min<std::size_t>(fields.size(), 4);
  TimecodeFields result;
  result.frames = read_integer(fields[count - 1]);
  if (count >= 2) result.seconds = read_integer(fields[count - 2]);
  if (count >= 3) result.minutes = read_integer(fields[count - 3]);
  if (count == 4) result.hours = read_integer(fields[0]);
  return result;
}

std::int64_t floor_div(std::int64_t a, std::int64_t b) {
  const std::int64_t quotient = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? quotient - 1 : quotient;
}

// Frame labels that drop-frame counting skips at the start of every minute but each tenth.
std::int64_t dropped_per_minute(std::int64_t base) { return floor_div(base, 15); }

// The frame numbers that drop-frame counting skips before hours:minutes: B div 15 per minute,
// except every tenth minute.
Wide dropped_frames(const TimecodeFields& timecode, std::int64_t base) {
  const Wide per_minute = dropped_per_minute(base);
  const Wide per_ten_minutes = per_minute * 9;
  const std::int64_t tens = floor_div(timecode.minutes, 10);
  const Wide remainder = Wide{timecode.minutes} - Wide{tens} * 10;
  return (Wide{timecode.hours} * 6 + tens) * per_ten_minutes + remainder * per_minute;
}

std::int64_t clamp_to_int64(Wide value) {
  constexpr Wide kMin = std::numeric_limits<std::int64_t>::min();
  constexpr Wide kMax = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(std::clamp(value, kMin, kMax));
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool all_digits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, is_digit);
}

int field_value(const std::string& field) { return std::stoi(field); }

}  // namespace

bool counts_drop_frames(std::string_view display_format) { return display_format == "DF"; }

std::int64_t to_frames(std::string_view timecode, double rate, std::string_view display_format) {
  const std::int64_t base = frame_base(rate);
  std::vector<std::string> texts = split_fields(with_colons(timecode));
  if (texts.size() == 2) texts = split_two_field_number(texts);
  const TimecodeFields fields = assign_from_end(texts);
  Wide total = Wide{fields.frames} + Wide{fields.seconds} * base +
               Wide{fields.minutes} * 60 * base + Wide{fields.hours} * 3600 * base;
  if (counts_drop_frames(display_format)) total -= dropped_frames(fields, base);
  return clamp_to_int64(total);
}

bool is_timecode(std::string_view text, std::int64_t frame_base) {
  // Only spaces and tabs may stand around a timecode: with a line break at either end, a text is
  // no timecode, and check says so.
  const std::string_view core = trimmed(text, " \t");
  if (all_digits(core)) return true;
  std::vector<std::string> fields = timecode_fields(core);
  if (!std::ranges::all_of(fields, [](const std::string& field) { return all_digits(field); })) {
    return false;
  }
  if (fields.size() == 2) {
    // A number cell: HHMMSSFF with ".0" after it.
    if (fields[1] != "0" || fields[0].size() > 8) return false;
    const std::string digits = std::string(8 - fields[0].size(), '0') + fields[0];
    fields = {digits.substr(0, 2), digits.substr(2, 2), digits.substr(4, 2), digits.substr(6, 2)};
  }
  if (fields.size() == 3) fields.insert(fields.begin(), "0");
  if (fields.size() != 4 || fields[0].size() > 2 || fields[1].size() > 2 || fields[2].size() > 2 ||
      fields[3].size() > 3) {
    return false;
  }
  return field_value(fields[1]) < 60 && field_value(fields[2]) < 60 &&
         field_value(fields[3]) < std::max<std::int64_t>(frame_base, 1);
}

std::vector<std::string> timecode_fields(std::string_view text) {
  std::string colons = with_colons(text);
  colons.pop_back();
  return split_fields(colons);
}

bool has_no_digits(std::string_view text) { return std::ranges::none_of(text, is_digit); }

std::string to_timecode(std::int64_t frames, double rate, std::string_view display_format) {
  const std::int64_t base = frame_base(rate);
  if (frames < 0 || base <= 0) return std::to_string(frames);
  const std::int64_t dropped = counts_drop_frames(display_format) ? dropped_per_minute(base) : 0;
  // Counted frames per hour, per ten minutes and per minute after the first of ten; the first
  // minute of every ten keeps all its labels.
  const std::int64_t per_full_minute = 60 * base;
  const std::int64_t per_minute = per_full_minute - dropped;
  const std::int64_t per_ten_minutes = per_full_minute + 9 * per_minute;
  const std::int64_t per_hour = 6 * per_ten_minutes;
  const std::int64_t hours = frames / per_hour;
  const std::int64_t tens = frames % per_hour / per_ten_minutes;
  std::int64_t rest = frames % per_hour % per_ten_minutes;
  std::int64_t minute = 0;
  if (rest >= per_full_minute) {
    rest -= per_full_minute;
    minute = 1 + rest / per_minute;
    rest = rest % per_minute + dropped;
  }
  return fmt::format("{:02}:{:02}:{:02}{}{:02}", hours, tens * 10 + minute, rest / base,
                     dropped > 0 ? ';' : ':', rest % base);
}

}  // namespace pellago
