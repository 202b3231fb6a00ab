#include "merge/cell_text.hpp"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace pellago {

namespace {

// Enough for "-1.23456789012345e+308" with room to spare.
using FloatBuffer = char[40];

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Where the mantissa of a printed float ends: at its 'e', or at the end of the text.
char* mantissa_end(char* text) {
  char* e = std::strchr(text, 'e');
  return e ? e : text + std::strlen(text);
}

}  // namespace

std::string float_text(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";

  FloatBuffer buffer;
  std::snprintf(buffer, sizeof buffer, "%#.15g", value);
  char* end = mantissa_end(buffer);
  // Exactly 15 integer digits print as "123456789012345.": such numbers go to exponent form.
  if (!is_digit(end[-1])) {
    std::snprintf(buffer, sizeof buffer, "%#.14e", value);
    end = mantissa_end(buffer);
  }

  char* kept = end;
  while (kept[-1] == '0' && is_digit(kept[-2])) --kept;
  std::memmove(kept, end, std::strlen(end) + 1);
  return buffer;
}

std::string cell_text(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* number = std::get_if<double>(&cell)) return float_text(*number);
  return {};
}

}  // namespace pellago
