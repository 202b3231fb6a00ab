#pragma once

#include <string>
#include <string_view>

namespace pellago {

// The blanks a cell's text may carry around what it means: spaces, tabs and line ends.
inline constexpr std::string_view kBlanks = " \t\r\n";

// The text without the characters of `blanks` at either end.
std::string_view trimmed(std::string_view text, std::string_view blanks = kBlanks);

// The text with its ASCII letters in lower (upper) case; every other byte as it is.
std::string lower_ascii(std::string text);
std::string upper_ascii(std::string text);

}  // namespace pellago
