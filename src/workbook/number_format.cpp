#include "workbook/number_format.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <vector>

#include "workbook/format_code.hpp"

namespace pellago {

namespace {

// The date and time letters of a format code, one per run ("yyyy" is one 'y'), in order.
std::vector<char> date_time_letters(std::string_view code) {
  std::vector<char> letters;
  auto add = [&letters](char letter) {
    if (letters.empty() || letters.back() != letter) letters.push_back(letter);
  };
  for (std::size_t i = 0; i < code.size(); ++i) {
    const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(code[i])));
    if (c == '"') {
      const std::size_t close = code.find('"', i + 1);
      i = close == std::string_view::npos ? code.size() : close;
    } else if (c == '\\' || c == '_' || c == '*') {
      ++i;  // an escaped character, a space as wide as one, a fill character
    } else if (c == '[') {
      const std::size_t close = code.find(']', i + 1);
      const std::string_view inside = code.substr(
          i + 1, close == std::string_view::npos ? std::string_view::npos : close - i - 1);
      // Elapsed time: [h], [mm], [ss]. Colours, conditions and locales are skipped.
      const char first = inside.empty() ? '\0' : static_cast<char>(std::tolower(inside[0]));
      if ((first == 'h' || first == 'm' || first == 's') &&
          inside.find_first_not_of(inside[0]) == std::string_view::npos) {
        add(first == 'm' ? 'n' : first);
      }
      i = close == std::string_view::npos ? code.size() : close;
    } else if (code.substr(i).size() >= 5 &&
               (code.compare(i, 5, "AM/PM") == 0 || code.compare(i, 5, "am/pm") == 0)) {
      add('p');
      i += 4;
    } else if (code.substr(i).size() >= 3 &&
               (code.compare(i, 3, "A/P") == 0 || code.compare(i, 3, "a/p") == 0)) {
      add('p');
      i += 2;
    } else if (c == 'y' || c == 'd' || c == 'm' || c == 'h' || c == 's') {
      add(c);
    }
  }
  return letters;
}

struct CivilDate {
  std::int64_t year;
  unsigned month;
  unsigned day;
};

// Proleptic Gregorian date of a count of days since 1970-01-01.
CivilDate civil_from_days(std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const auto day_of_era = static_cast<unsigned>(days - era * 146097);
  const unsigned year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const unsigned day_of_year =
      day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const unsigned shifted_month = (5 * day_of_year + 2) / 153;
  const unsigned day = day_of_year - (153 * shifted_month + 2) / 5 + 1;
  const unsigned month = shifted_month < 10 ? shifted_month + 3 : shifted_month - 9;
  return {static_cast<std::int64_t>(year_of_era) + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

constexpr std::int64_t kSerialZero1900 = -25569;  // 1899-12-30, so that serial 61 is 1900-03-01
constexpr std::int64_t kSerialZero1904 = -24107;  // 1904-01-01
constexpr double kLastSerial = 2958466.0;         // 10000-01-01 in the 1900 system

void set_date(DateTime& value, std::int64_t serial_day, bool date1904) {
  if (!date1904 && serial_day == 60) {  // the day the 1900 system invents
    value.year = 1900;
    value.month = 2;
    value.day = 29;
    return;
  }
  std::int64_t days = (date1904 ? kSerialZero1904 : kSerialZero1900) + serial_day;
  if (!date1904 && serial_day < 60) ++days;
  const CivilDate date = civil_from_days(days);
  value.year = static_cast<int>(date.year);
  value.month = static_cast<int>(date.month);
  value.day = static_cast<int>(date.day);
}

void set_time(DateTime& value, std::int64_t seconds) {
  value.hour = static_cast<int>(seconds / 3600);
  value.minute = static_cast<int>(seconds / 60 % 60);
  value.second = static_cast<int>(seconds % 60);
}

}  // namespace

DateKind builtin_date_kind(int format_id) {
  if (format_id >= 14 && format_id <= 17) return DateKind::date;
  if ((format_id >= 18 && format_id <= 21) || (format_id >= 45 && format_id <= 47)) {
    return DateKind::time;
  }
  if (format_id == 22) return DateKind::date_time;
  return DateKind::none;
}

DateKind custom_date_kind(std::string_view format_code) {
  const std::vector<char> letters = date_time_letters(format_code);
  bool has_date = false;
  bool has_time = false;
  for (std::size_t i = 0; i < letters.size(); ++i) {
    const char letter = letters[i];
    if (letter == 'm') {
      const bool minutes =
          (i > 0 && letters[i - 1] == 'h') || (i + 1 < letters.size() && letters[i + 1] == 's');
      (minutes ? has_time : has_date) = true;
    } else if (letter == 'y' || letter == 'd') {
      has_date = true;
    } else {
      has_time = true;  // h, s, elapsed minutes 'n', AM/PM 'p'
    }
  }
  if (has_date && has_time) return DateKind::date_time;
  if (has_date) return DateKind::date;
  if (has_time) return DateKind::time;
  return DateKind::none;
}

DateKind format_date_kind(int format_id, const std::map<int, std::string>& custom_codes) {
  const auto custom = custom_codes.find(format_id);
  return custom != custom_codes.end() ? custom_date_kind(custom->second)
                                      : builtin_date_kind(format_id);
}

CellFormats cell_formats(const std::vector<int>& format_ids,
                         const std::map<int, std::string>& custom_codes) {
  CellFormats formats;
  formats.kinds.reserve(format_ids.size());
  formats.codes.reserve(format_ids.size());
  for (const int id : format_ids) {
    formats.kinds.push_back(format_date_kind(id, custom_codes));
    const auto custom = custom_codes.find(id);
    formats.codes.emplace_back(custom != custom_codes.end() ? std::string_view(custom->second)
                                                            : builtin_format_code(id));
  }
  return formats;
}

std::optional<DateTime> serial_date_time(double serial, DateKind kind, bool date1904) {
  if (kind == DateKind::none || !(serial >= 0.0) || serial >= kLastSerial) return std::nullopt;
  const auto total_seconds = static_cast<std::int64_t>(std::llround(serial * 86400.0));
  const std::int64_t day = total_seconds / 86400;
  DateTime value;
  value.kind = kind == DateKind::time && day > 0 ? DateKind::date_time : kind;
  if (value.kind != DateKind::time) set_date(value, day, date1904);
  if (value.kind != DateKind::date) set_time(value, total_seconds % 86400);
  return value;
}

namespace {

// Digits at text[at, at + count) as a number, or -1.
int digits_at(std::string_view text, std::size_t at, std::size_t count) {
  if (text.size() < at + count) return -1;
  int value = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (text[i] < '0' || text[i] > '9') return -1;
    value = value * 10 + (text[i] - '0');
  }
  return value;
}

bool parse_time(std::string_view text, DateTime& value) {
  value.hour = digits_at(text, 0, 2);
  value.minute = digits_at(text, 3, 2);
  value.second = digits_at(text, 6, 2);
  const std::string_view rest = text.substr(std::min<std::size_t>(8, text.size()));
  const bool fraction = !rest.empty() && rest[0] == '.' &&
                        rest.find_first_not_of("0123456789", 1) == std::string_view::npos;
  return text.size() >= 8 && text[2] == ':' && text[5] == ':' && value.hour >= 0 &&
         value.hour < 24 && value.minute >= 0 && value.minute < 60 && value.second >= 0 &&
         value.second < 60 && (rest.empty() || rest == "Z" || fraction);
}

bool parse_date(std::string_view text, DateTime& value) {
  value.year = digits_at(text, 0, 4);
  value.month = digits_at(text, 5, 2);
  value.day = digits_at(text, 8, 2);
  return text.size() == 10 && text[4] == '-' && text[7] == '-' && value.year >= 0 &&
         value.month >= 1 && value.month <= 12 && value.day >= 1 && value.day <= 31;
}

}  // namespace

std::optional<DateTime> parse_iso_date_time(std::string_view text) {
  DateTime value;
  if (text.size() > 10 && text[10] == 'T') {
    value.kind = DateKind::date_time;
    if (!parse_date(text.substr(0, 10), value) || !parse_time(text.substr(11), value)) {
      return std::nullopt;
    }
    return value;
  }
  value.kind = text.size() == 10 ? DateKind::date : DateKind::time;
  const bool parsed =
      value.kind == DateKind::date ? parse_date(text, value) : parse_time(text, value);
  return parsed ? std::optional(value) : std::nullopt;
}

std::string date_time_text(const DateTime& value) {
  const std::string date = fmt::format("{:04}-{:02}-{:02}", value.year, value.month, value.day);
  const std::string time = fmt::format("{:02}:{:02}:{:02}", value.hour, value.minute, value.second);
  switch (value.kind) {
    case DateKind::date:
      return date;
    case DateKind::time:
      return time;
    case DateKind::date_time:
    case DateKind::none:
      break;
  }
  return date + "T" + time + "+00:00";
}

}  // namespace pellago
