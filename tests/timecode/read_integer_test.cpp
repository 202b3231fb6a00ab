#include "timecode/read_integer.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace pellago {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

struct Reading {
  std::string text;
  std::int64_t value;
};

void expect_readings(const std::vector<Reading>& readings) {
  for (const auto& [text, value] : readings)
    EXPECT_EQ(read_integer(text), value) << '"' << text << '"';
}

TEST(ReadInteger, TakesSignAndLongestDigitRunAfterWhiteSpace) {
  expect_readings({{"30", 30},
                   {" 30 ", 30},
                   {"\t\n\v\f\r7", 7},
                   {"29.97", 29},
                   {"+5", 5},
                   {"-5", -5},
                   {"007", 7},
                   {"12abc", 12},
                   {"0x1A", 0},
                   {"", 0},
                   {"abc", 0},
                   {"- 5", 0},
                   {"+-5", 0},
                   {"-", 0},
                   {" \t", 0},
                   {"1 000", 1}});
}

TEST(ReadInteger, SkipsOnlyASingleUnderscoreBetweenTwoDigits) {
  expect_readings({{"1_000", 1000},
                   {"1_0_0", 100},
                   {"-1_0", -10},
                   {"1__0", 1},
                   {"1_", 1},
                   {"_1", 0},
                   {"+_1", 0},
                   {"1_x0", 1}});
}

TEST(ReadInteger, SaturatesDigitRunsBeyond64Bits) {
  expect_readings({{"9223372036854775807", kMax},
                   {"9223372036854775808", kMax},
                   {"9_223_372_036_854_775_807", kMax},
                   {"-9223372036854775807", kMin + 1},
                   {"-9223372036854775808", kMin},
                   {"-9223372036854775809", kMin},
                   {std::string(400, '9'), kMax},
                   {"-" + std::string(400, '9'), kMin},
                   {"000000000000000000000000000042", 42}});
}

}  // namespace
}  // namespace pellago
