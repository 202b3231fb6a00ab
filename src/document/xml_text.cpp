#include "document/xml_text.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <utility>

namespace pellago {

namespace {

// Chars of XML 1.0: tab, line feed, carriage return, U+0020..U+D7FF, U+E000..U+FFFD, and the
// planes above the first.
bool is_xml_char(char32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

// A byte that is a whole character XML 1.0 can carry.
bool is_plain_ascii(unsigned char byte) {
  return byte >= 0x20 ? byte < 0x80 : byte == 0x9 || byte == 0xA || byte == 0xD;
}

// The code point of the UTF-8 sequence at the start of `text` and its length in bytes, or
// nullopt when it is not valid UTF-8 (overlong forms and surrogates included).
std::optional<std::pair<char32_t, std::size_t>> decode_utf8(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return std::pair{static_cast<char32_t>(lead), std::size_t{1}};
  std::size_t length = 0;
  char32_t c = 0;
  char32_t smallest = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, c = lead & 0x1F, smallest = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, c = lead & 0x0F, smallest = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, c = lead & 0x07, smallest = 0x10000;
  } else {
    return std::nullopt;
  }
  if (text.size() < length) return std::nullopt;
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    c = (c << 6) | (next & 0x3F);
  }
  if (c < smallest || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return std::nullopt;
  return std::pair{c, length};
}

}  // namespace

std::optional<std::string> text_xml_cannot_carry(std::string_view text) {
  while (!text.empty()) {
    // Most text is printable ASCII and line breaks: skipped a byte at a time without decoding.
    std::size_t plain = 0;
    while (plain < text.size() && is_plain_ascii(static_cast<unsigned char>(text[plain]))) ++plain;
    text.remove_prefix(plain);
    if (text.empty()) break;
    const auto decoded = decode_utf8(text);
    if (!decoded) {
      return fmt::format("the byte 0x{:02X} that is not UTF-8",
                         static_cast<unsigned char>(text[0]));
    }
    const auto [c, length] = *decoded;
    if (!is_xml_char(c)) return fmt::format("U+{:04X}", static_cast<std::uint32_t>(c));
    text.remove_prefix(length);
  }
  return std::nullopt;
}

}  // namespace pellago
