#pragma once

#include <string_view>

namespace pellago {

// The blanks a cell's text may carry around what it means: spaces, tabs and line ends.
inline constexpr std::string_view kBlanks = " \t\r\n";

// The text without the characters of `blanks` at either end.
std::string_view trimmed(std::string_view text, std::string_view blanks = kBlanks);

}  // namespace pellago
