#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/workbook.hpp"

namespace pellago {

// The kind of the built-in number format with that id (14-22 and 45-47 show dates and times).
DateKind builtin_date_kind(int format_id);

// The kind of a custom format code: date and time letters (y, m, d, h, s, AM/PM, elapsed [h])
// outside quoted text, escapes and brackets. "m" is minutes next to h or s, months otherwise.
DateKind custom_date_kind(std::string_view format_code);

// The kind of the number format with that id: its custom code's when the workbook defines one,
// else the built-in format's.
DateKind format_date_kind(int format_id, const std::map<int, std::string>& custom_codes);

// The number formats of a workbook's cell formats (its XF records, or its styles' cellXfs), by
// the index its cells give.
struct CellFormats {
  std::vector<DateKind> kinds;
  std::vector<std::string> codes;  // empty for General
};

// The cell formats whose number format ids are `format_ids`, with the workbook's custom codes.
CellFormats cell_formats(const std::vector<int>& format_ids,
                         const std::map<int, std::string>& custom_codes);

// The serial number as a value of its kind; a time of one day or more becomes a date and time.
// Serials count days from 1900 with the 1900 leap-year quirk (60 is 1900-02-29), or from
// 1904-01-01 when date1904, and are rounded to the second. None for DateKind::none, negative
// serials and serials past 9999-12-31.
std::optional<DateTime> serial_date_time(double serial, DateKind kind, bool date1904);

// An ISO 8601 date, date and time, or time of day as an .xlsx date cell holds it: "2024-03-01",
// "2024-03-01T12:30:15" (a fraction of a second and a "Z" are ignored), "12:30:15". None for any
// other text.
std::optional<DateTime> parse_iso_date_time(std::string_view text);

}  // namespace pellago
