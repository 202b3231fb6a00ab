#include "timecode/to_frames.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace pellago {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

struct Conversion {
  std::string timecode;
  double rate;
  std::string display_format;
  std::int64_t frames;
};

void expect_conversions(const std::vector<Conversion>& conversions) {
  for (const auto& [timecode, rate, display_format, frames] : conversions) {
    EXPECT_EQ(to_frames(timecode, rate, display_format), frames)
        << '"' << timecode << "\" at " << rate << ' ' << display_format;
  }
}

TEST(ToFrames, WorkedResults) {
  expect_conversions({
      {"01:00:00:00", 25, "NDF", 90000},
      {"01:00:00:00", 29.97, "NDF", 108000},
      {"01;00;00;00", 29.97, "NDF", 108000},
      {"01:00:00;00", 29.97, "DF", 107892},
      {"00:01:00;02", 29.97, "DF", 1800},
      {"00:09:59;29", 29.97, "DF", 17981},
      {"00:10:00;00", 29.97, "DF", 17982},
      {"01:00:00;00", 59.94, "DF", 215784},
      {"00:01:00:00", 25, "DF", 1499},
      {"01.00.00.12", 25, "NDF", 90012},
      {"02:03:04", 30, "NDF", 3694},
      {"1000012.0", 25, "NDF", 90012},
      {"10000.0", 25, "NDF", 90000},
      {"12.5", 25, "NDF", 305},
      {"01000012", 25, "NDF", 1000012},
      {"1:2:3:4:5", 25, "NDF", 93079},
      {"01:00:00:", 30, "NDF", 108000},
      {"", 25, "NDF", 0},
      {"", 29.97, "DF", 0},
  });
}

TEST(ToFrames, TwoFieldsAreANumberCutIntoPairsFromTheLeft) {
  expect_conversions({
      // Written with a colon, two fields still take the rule.
      {"01:00", 25, "NDF", 25},
      {"100:05", 25, "NDF", 1505},
      // Odd length gets a leading "0"; leading zeros go before the pairing.
      {"10000.12", 25, "NDF", 90012},
      {"00100.5", 25, "NDF", 1505},
      {".5", 25, "NDF", 5},
      // Pieces beyond four push the fraction out.
      {"1234567890.99", 25, "NDF", 12 * 90000 + 34 * 1500 + 56 * 25 + 78},
      // A negative number keeps its sign in the text that is cut: "-1", "00".
      {"-100.5", 25, "NDF", -1 * 1500 + 5},
      // Every digit of a run beyond 64 bits is kept for the pairing.
      {"123456789012345678901234.5", 25, "NDF", 12 * 90000 + 34 * 1500 + 56 * 25 + 78},
      {"3" + std::string(30, '0') + ".5", 25, "NDF", 3 * 90000},
  });
}

TEST(ToFrames, FieldsAreAssignedFromTheEndAndEmptyFieldsReadZero) {
  expect_conversions({
      {"abc", 25, "NDF", 0},
      {"1:02:03", 25, "NDF", 1500 + 50 + 3},
      {":01:02:03", 25, "NDF", 1500 + 50 + 3},
      {"1::5", 25, "NDF", 1505},
      {"01.00;00:12", 25, "NDF", 90012},
      // The first four fields are kept, the trailing empty one is dropped.
      {"01:00:00:;", 25, "NDF", 90000},
  });
}

TEST(ToFrames, DropFrameOnlyForExactlyDFAndFromHoursAndMinutesAlone) {
  expect_conversions({
      // A semicolon does not select drop-frame, nor does any other spelling.
      {"01:00:00;00", 29.97, "df", 108000},
      {"01:00:00;00", 29.97, "DF ", 108000},
      // 24 and 25 drop one per minute, nine per ten minutes.
      {"00:01:00:00", 24, "DF", 1439},
      {"01:00:00:00", 25, "DF", 90000 - 54},
      // Below 15 frames per second nothing drops.
      {"01:01:00:00", 10, "DF", 36600},
      // Seconds and frames are not checked against the skipped numbers.
      {"00:01:00;00", 29.97, "DF", 1798},
      // Negative minutes divide rounding down: -1 is Q = -1, R = 9; -11 is Q = -2, R = 9.
      {"00:-1:00:00", 30, "DF", -1800},
      {"00:-11:00:00", 30, "DF", -19800 + 18},
  });
}

TEST(ToFrames, RatesRoundHalfAwayFromZeroAndHugeValuesClamp) {
  const std::string huge(40, '9');
  expect_conversions({
      {"00:00:01:00", 23.976, "NDF", 24},
      {"00:00:01:00", 24.5, "NDF", 25},
      {"00:00:01:00", 24.49, "NDF", 24},
      {"00:00:01:00", -24.5, "NDF", -25},
      {huge + ":00:00:00", 60, "NDF", kMax},
      {"-" + huge + ":00:00:00", 60, "DF", kMin},
      {huge + ":" + huge + ":" + huge + ":" + huge, 59.94, "DF", kMax},
      // Exact arithmetic: a saturated field still combines with the others.
      {"0:0:-1:" + huge, 25, "NDF", kMax - 25},
      {"00:00:01:00", 1e300, "NDF", std::int64_t{1} << 40},
      {"00:00:01:00", std::numeric_limits<double>::infinity(), "DF", std::int64_t{1} << 40},
      {"00:00:01:05", std::nan(""), "DF", 5},
  });
}

TEST(ToFrames, TimecodesAreToldFromTextsThatOnlyConvert) {
  for (const char* text :
       {"01:00:00:00", "01;00;00;24", " 01.00.00.12 ", "02:03:04", "1000012.0", "250", "\t25\t"}) {
    EXPECT_TRUE(is_timecode(text, 25)) << '"' << text << '"';
  }
  for (const char* text : {"", " ", "TBD", "10h", "1:2:3:4:5", "01:00:00:", "01::00", "12.5",
                           "01:00:00:25", "00:60:00:00", "1:00:00:00:00", "01:00:00:00\n"}) {
    EXPECT_FALSE(is_timecode(text, 25)) << '"' << text << '"';
  }
  EXPECT_TRUE(has_no_digits("TBD"));
  EXPECT_FALSE(has_no_digits("take 2"));
}

TEST(ToTimecode, WritesTheTimecodeThatToFramesReadsBack) {
  EXPECT_EQ(to_timecode(90012, 25, "NDF"), "01:00:00:12");
  EXPECT_EQ(to_timecode(107892, 29.97, "DF"), "01:00:00;00");
  EXPECT_EQ(to_timecode(1800, 29.97, "DF"), "00:01:00;02");
  EXPECT_EQ(to_timecode(17981, 29.97, "DF"), "00:09:59;29");
  EXPECT_EQ(to_timecode(17982, 29.97, "DF"), "00:10:00;00");
  EXPECT_EQ(to_timecode(1500, 25, "DF"), "00:01:00;01");
  EXPECT_EQ(to_timecode(360000 * 100, 100, "NDF"), "100:00:00:00");
  EXPECT_EQ(to_timecode(-12, 25, "NDF"), "-12");
  EXPECT_EQ(to_timecode(1234, 0, "DF"), "1234");

  // Every frame of the first hours at every rate of the table, and counts far beyond them.
  for (const double rate : {23.976, 24.0, 25.0, 29.97, 30.0, 59.94, 60.0, 10.0, 50.0}) {
    for (const std::string format : {"DF", "NDF"}) {
      for (std::int64_t frames = 0; frames < 3 * 3600 * 60; frames += 13) {
        ASSERT_EQ(to_frames(to_timecode(frames, rate, format), rate, format), frames)
            << to_timecode(frames, rate, format) << " at " << rate << ' ' << format;
      }
      for (const std::int64_t frames : {kMax, kMax - 1, std::int64_t{1} << 40, kMin}) {
        EXPECT_EQ(to_frames(to_timecode(frames, rate, format), rate, format), frames);
      }
    }
  }
}

}  // namespace
}  // namespace pellago
