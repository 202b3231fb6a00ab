#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pellago {

// What in `text` XML 1.0 cannot carry, said for a message: the first character outside XML's
// Char production as "U+0007", or the first byte that is not valid UTF-8 as "the byte 0xFF that
// is not UTF-8"; nullopt when the whole text can be written.
std::optional<std::string> text_xml_cannot_carry(std::string_view text);

}  // namespace pellago
