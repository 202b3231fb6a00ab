#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pellago {

// Reads text as an integer: leading white space skipped, an optional sign, then the longest run of
// decimal digits in which a single underscore between two digits is skipped; the rest is ignored.
// Text without such digits reads as 0. A digit run beyond the 64-bit range saturates to INT64_MAX
// (or INT64_MIN when negative).
std::int64_t read_integer(std::string_view text);

// The integer that read_integer reads, written back as decimal text at any width: "-" for a
// negative value, no leading zeros ("007" gives "7", "-0" and "x" give "0"). Unlike read_integer it
// keeps every digit of a run beyond 64 bits.
std::string integer_text(std::string_view text);

}  // namespace pellago
