#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "workbook/workbook.hpp"

namespace pellago {

// Text of a cell as the merge compares and writes it: text unchanged, empty as "", a number in
// float_text form.
std::string cell_text(const Cell& cell);

// A double written as a scripting interpreter writes floats: 15 significant digits, at least one
// digit after the point, exponent form outside 1e-4 .. 1e15 (12 -> "12.0", 1e15 -> "1.0e+15").
std::string float_text(double value);

// What in `text` XML 1.0 cannot carry, said for a message: the first character outside XML's
// Char production as "U+0007", or the first byte that is not valid UTF-8 as "the byte 0xFF that
// is not UTF-8"; nullopt when the whole text can be written.
std::optional<std::string> text_xml_cannot_carry(std::string_view text);

}  // namespace pellago
