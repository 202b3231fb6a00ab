#include "sheet/cell_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "workbook/format_code.hpp"

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

}  // namespace

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
  if (const auto* truth = std::get_if<bool>(&cell)) return *truth ? "true" : "false";
  if (const auto* date = std::get_if<DateTime>(&cell)) return date_time_text(*date);
  return {};
}

std::string shown_text(const Cell& cell, std::string_view format_code) {
  if (const auto* number = std::get_if<double>(&cell)) return format_number(*number, format_code);
  if (const auto* truth = std::get_if<bool>(&cell)) return *truth ? "TRUE" : "FALSE";
  if (const auto* date = std::get_if<DateTime>(&cell)) return format_date_time(*date, format_code);
  return cell_text(cell);
}

std::string cell_text_at(const Workbook& workbook, int row, int column, bool as_shown) {
  const Cell& cell = workbook.cell(row, column);
  return as_shown ? shown_text(cell, workbook.number_format(row, column)) : cell_text(cell);
}

std::string_view cell_kind_name(const Cell& cell) {
  if (std::holds_alternative<std::string>(cell)) return "text";
  if (std::holds_alternative<double>(cell)) return "number";
  if (std::holds_alternative<bool>(cell)) return "boolean";
  if (const auto* date = std::get_if<DateTime>(&cell)) {
    switch (date->kind) {
      case DateKind::date:
        return "date";
      case DateKind::time:
        return "time";
      case DateKind::date_time:
      case DateKind::none:
        return "date and time";
    }
  }
  return "empty";
}

}  // namespace pellago
