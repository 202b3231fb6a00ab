#include "timecode/read_integer.hpp"

#include <limits>

namespace pellago {

namespace {

// White space as C's isspace in the "C" locale: blank, \t, \n, \v, \f and \r.
bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The sign and the digit run of an integer's text. `digits` may hold single underscores, each
// between two digits.
struct IntegerSpan {
  bool negative = false;
  std::string_view digits;
};

IntegerSpan find_integer(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && is_space(text[i])) ++i;
  IntegerSpan span;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    span.negative = text[i] == '-';
    ++i;
  }
  std::size_t end = i;
  while (end < text.size() && is_digit(text[end])) {
    ++end;
    if (end + 1 < text.size() && text[end] == '_' && is_digit(text[end + 1])) ++end;
  }
  span.digits = text.substr(i, end - i);
  return span;
}

}  // namespace

std::int64_t read_integer(std::string_view text) {
  const IntegerSpan span = find_integer(text);
  // The magnitude stops growing at the largest value the sign allows, so that a run of any length
  // saturates instead of overflowing.
  const std::uint64_t limit =
      std::uint64_t{std::numeric_limits<std::int64_t>::max()} + (span.negative ? 1 : 0);
  std::uint64_t magnitude = 0;
  for (const char c : span.digits) {
    if (c == '_') continue;
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  if (!span.negative) return static_cast<std::int64_t>(magnitude);
  if (magnitude == limit) return std::numeric_limits<std::int64_t>::min();
  return -static_cast<std::int64_t>(magnitude);
}

std::string integer_text(std::string_view text) {
  const IntegerSpan span = find_integer(text);
  std::string digits;
  for (const char c : span.digits) {
    if (c == '_' || (c == '0' && digits.empty())) continue;
    digits += c;
  }
  if (digits.empty()) return "0";
  return span.negative ? "-" + digits : digits;
}

}  // namespace pellago
