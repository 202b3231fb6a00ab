#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pellago {

// What a number format shows a serial date-time number as.
enum class DateKind { none, date, time, date_time };

// The kind of the built-in number format with that id (14-22 and 45-47 show dates and times).
DateKind builtin_date_kind(int format_id);

// The kind of a custom format code: date and time letters (y, m, d, h, s, AM/PM, elapsed [h])
// outside quoted text, escapes and brackets. "m" is minutes next to h or s, months otherwise.
DateKind custom_date_kind(std::string_view format_code);

// The serial number as ISO 8601 text of its kind: "2024-03-01", "12:30:00",
// "2024-03-01T12:30:00" (a time of one day or more is shown with its date). Serials count days
// from 1900 with the 1900 leap-year quirk (60 is 1900-02-29), or from 1904-01-01 when date1904.
// Empty for DateKind::none, negative serials and serials past 9999-12-31.
std::optional<std::string> serial_date_text(double serial, DateKind kind, bool date1904);

}  // namespace pellago
