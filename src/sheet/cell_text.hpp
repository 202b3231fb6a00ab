#pragma once

#include <string>
#include <string_view>

#include "workbook/workbook.hpp"

namespace pellago {

// Text of a cell as the merge compares and writes it: text unchanged, empty as "", a number in
// float_text form, a truth value as "true" or "false", a date or time in date_time_text form.
std::string cell_text(const Cell& cell);

// Text of a cell as a spreadsheet shows it under its number format code: text unchanged, empty as
// "", a number or a date or time by the code ("12" under General, "12.50" under "0.00", "4-Mar"
// under "d-mmm"), a truth value as "TRUE" or "FALSE".
std::string shown_text(const Cell& cell, std::string_view format_code);

// The text of the workbook's cell: shown_text with its number format when as_shown, cell_text
// otherwise.
std::string cell_text_at(const Workbook& workbook, int row, int column, bool as_shown);

// What kind of value a cell holds, in words: "empty", "text", "number", "boolean", "date",
// "date and time" or "time".
std::string_view cell_kind_name(const Cell& cell);

// A double written as a scripting interpreter writes floats: 15 significant digits, at least one
// digit after the point, exponent form outside 1e-4 .. 1e15 (12 -> "12.0", 1e15 -> "1.0e+15").
std::string float_text(double value);

}  // namespace pellago
