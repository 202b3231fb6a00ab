#pragma once

#include <cstdint>
#include <string_view>

namespace pellago {

// Reads text as an integer: leading white space skipped, an optional sign, then the longest run of
// decimal digits in which a single underscore between two digits is skipped; the rest is ignored.
// Text without such digits reads as 0.
std::int64_t read_integer(std::string_view text);

}  // namespace pellago
