#include "timecode/frame_rate.hpp"

#include <gtest/gtest.h>

namespace pellago {
namespace {

TEST(FrameRates, EachTimebaseAndNtscPairFindsItsRowInTableOrder) {
  const FrameRates expected = {
      {"24P (24fps)", 24, "TRUE", 23.976},   {"Film (24fps)", 24, "FALSE", 24},
      {"PAL (25fps)", 25, "FALSE", 25},      {"NTSC/HD (29.97fps)", 30, "TRUE", 29.97},
      {"Video/HD (30fps)", 30, "FALSE", 30}, {"HD (59.94fps)", 60, "TRUE", 59.94},
      {"HD (60fps)", 60, "FALSE", 60},
  };
  ASSERT_EQ(FRAME_RATES.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const FrameRate& want = expected[i];
    EXPECT_EQ(FRAME_RATES[i].type, want.type) << "row " << i + 1;
    const auto found = find_frame_rate(FRAME_RATES, want.timebase, want.ntsc);
    ASSERT_TRUE(found) << want.type;
    EXPECT_EQ(found->type, want.type);
    EXPECT_EQ(found->timebase, want.timebase);
    EXPECT_EQ(found->ntsc, want.ntsc);
    EXPECT_EQ(found->fcp_rate, want.fcp_rate) << want.type;
  }
}

TEST(FrameRates, UnknownTimebaseOrInexactNtscFindsNothing) {
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 25, "TRUE"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 50, "FALSE"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 0, "FALSE"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "true"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, " TRUE"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "TRUE\n"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, ""));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30 + (std::int64_t{1} << 32), "TRUE"));
}

TEST(FrameRates, HostTableIsSearchedInItsOwnOrder) {
  const FrameRates host = {{"first", 25, "TRUE", 25}, {"second", 25, "TRUE", 24.5}};
  EXPECT_EQ(find_frame_rate(host, 25, "TRUE")->type, "first");
  EXPECT_FALSE(find_frame_rate(host, 30, "TRUE"));
}

}  // namespace
}  // namespace pellago
