#include "merge/cell_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace pellago {

namespace {

constexpr int kSignificantDigits = 15;

// A finite double rounded to 15 significant digits: digits[0] is the one before the point.
struct Decimal {
  bool negative = false;
  char digits[kSignificantDigits] = {};
  int exponent = 0;
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

Decimal to_decimal(double value) {
  // "-d.dddddddddddddde+XX", rounded as printf rounds.
  char text[32];
  const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific,
                                  kSignificantDigits - 1)
                        .ptr;
  Decimal decimal;
  const char* p = text;
  decimal.negative = *p == '-';
  if (decimal.negative) ++p;
  decimal.digits[0] = p[0];
  std::memcpy(decimal.digits + 1, p + 2, kSignificantDigits - 1);
  p += kSignificantDigits + 1;  // at the 'e'
  std::from_chars(p + 2, end, decimal.exponent);
  if (p[1] == '-') decimal.exponent = -decimal.exponent;
  return decimal;
}

// Drops the fraction's trailing zeros, keeping at least one digit after the point.
char* drop_trailing_zeros(char* end) {
  while (end[-1] == '0' && is_digit(end[-2])) --end;
  return end;
}

char* write_fixed(const Decimal& decimal, char* out) {
  const char* digits = decimal.digits;
  if (decimal.exponent < 0) {
    *out++ = '0';
    *out++ = '.';
    out = std::fill_n(out, -decimal.exponent - 1, '0');
    out = std::copy_n(digits, kSignificantDigits, out);
  } else {
    out = std::copy_n(digits, decimal.exponent + 1, out);
    *out++ = '.';
    out = std::copy(digits + decimal.exponent + 1, digits + kSignificantDigits, out);
  }
  return drop_trailing_zeros(out);
}

char* write_exponent_form(const Decimal& decimal, char* out) {
  *out++ = decimal.digits[0];
  *out++ = '.';
  out = drop_trailing_zeros(std::copy_n(decimal.digits + 1, kSignificantDigits - 1, out));
  *out++ = 'e';
  *out++ = decimal.exponent < 0 ? '-' : '+';
  const int magnitude = std::abs(decimal.exponent);
  if (magnitude < 10) *out++ = '0';
  return std::to_chars(out, out + 3, magnitude).ptr;
}

// Chars of XML 1.0: tab, line feed, carriage return, U+0020..U+D7FF, U+E000..U+FFFD, and the
// planes above the first.
bool is_xml_char(char32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
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

std::string float_text(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";

  // Fixed form for decimal exponents -4 .. 13. With 14, fixed form would end in the point
  // ("123456789012345."), so exponent form is used there too.
  const Decimal decimal = to_decimal(value);
  char buffer[40];
  char* out = buffer;
  if (decimal.negative) *out++ = '-';
  const bool fixed = decimal.exponent >= -4 && decimal.exponent <= 13;
  out = fixed ? write_fixed(decimal, out) : write_exponent_form(decimal, out);
  return std::string(buffer, out);
}

std::string cell_text(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* number = std::get_if<double>(&cell)) return float_text(*number);
  return {};
}

}  // namespace pellago
