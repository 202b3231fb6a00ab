#include "timecode/read_integer.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace pellago {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

TEST(ReadInteger, TakesSignAndDigitRunWithSingleUnderscoresAndSaturates) {
  const std::vector<std::pair<std::string, std::int64_t>> readings = {
      // White space, one sign, the longest digit run; anything after it is ignored.
      {"\t\n\v\f\r7", 7},
      {"29.97", 29},
      {"-5", -5},
      {"12abc", 12},
      {"1 000", 1},
      {"", 0},
      {"- 5", 0},
      {"+-5", 0},
      // A single underscore between two digits is skipped, no other.
      {"1_000", 1000},
      {"1__0", 1},
      {"1_", 1},
      {"_1", 0},
      {"1_x0", 1},
      // Runs beyond 64 bits saturate at the limit of their sign.
      {"9223372036854775807", kMax},
      {"9223372036854775808", kMax},
      {"-9223372036854775807", kMin + 1},
      {"-9223372036854775808", kMin},
      {"-9223372036854775809", kMin},
      {std::string(400, '9'), kMax},
      {"-" + std::string(400, '9'), kMin},
      {"000000000000000000000000000042", 42},
  };
  for (const auto& [text, value] : readings)
    EXPECT_EQ(read_integer(text), value) << '"' << text << '"';
}

}  // namespace
}  // namespace pellago
