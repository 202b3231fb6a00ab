#include "sheet/cell_text.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace pellago {
namespace {

// The interpreter's own recipe, over printf output and std::string operations: "%#.15g", or
// "%#.14e" when that ends in the point, then the fraction's trailing zeros dropped.
std::string reference_float_text(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  const auto printed = [value](const char* format) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return std::string(text);
  };
  std::string text = printed("%#.15g");
  if (text[std::min(text.find('e'), text.size()) - 1] == '.') text = printed("%#.14e");
  const std::size_t mantissa_length = std::min(text.find('e'), text.size());
  std::string mantissa = text.substr(0, mantissa_length);
  std::size_t last_kept = mantissa.find_last_not_of('0');
  if (mantissa[last_kept] == '.') ++last_kept;
  return mantissa.substr(0, last_kept + 1) + text.substr(mantissa_length);
}

TEST(FloatText, WritesNumbersAsTheInterpreterDoes) {
  const double max = std::numeric_limits<double>::max();
  const double infinity = std::numeric_limits<double>::infinity();
  const std::pair<double, std::string> cases[] = {
      {12, "12.0"},
      {23.976, "23.976"},
      {0.0001, "0.0001"},
      {0.00001, "1.0e-05"},
      {1.0 / 3, "0.333333333333333"},
      {1e15, "1.0e+15"},
      {-0.0, "-0.0"},
      {0, "0.0"},
      {123456789012345, "1.23456789012345e+14"},
      {99999999999999, "99999999999999.0"},
      {1234567890123456, "1.23456789012346e+15"},
      {0.1 + 0.2, "0.3"},
      {max, "1.79769313486232e+308"},
      {5e-324, "4.94065645841247e-324"},
      {infinity, "Infinity"},
      {-infinity, "-Infinity"},
      {std::nan(""), "NaN"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(float_text(value), text) << text;
}

TEST(FloatText, AgreesWithReferenceOverRandomDoubles) {
  std::mt19937_64 random(20240611);
  for (int i = 0; i < 200000; ++i) {
    const double value = std::bit_cast<double>(random());
    ASSERT_EQ(float_text(value), reference_float_text(value)) << fmt::format("{:a}", value);
  }
  // Decimals as people type them: up to 17 digits with the point anywhere.
  std::uniform_int_distribution<std::int64_t> digits(-99999999999999999, 99999999999999999);
  std::uniform_int_distribution<int> places(-5, 25);
  for (int i = 0; i < 200000; ++i) {
    const std::int64_t whole = digits(random) / static_cast<std::int64_t>(std::pow(10, i % 17));
    const double value = static_cast<double>(whole) / std::pow(10.0, places(random));
    ASSERT_EQ(float_text(value), reference_float_text(value)) << fmt::format("{:a}", value);
  }
}

}  // namespace
}  // namespace pellago
