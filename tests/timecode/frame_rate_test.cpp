#include "timecode/frame_rate.hpp"

#include <gtest/gtest.h>

namespace pellago {
namespace {

TEST(FrameRates, LookupTakesTheFirstRowWhosePairMatchesExactly) {
  EXPECT_EQ(find_frame_rate(FRAME_RATES, 24, "TRUE")->fcp_rate, 23.976);
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 25, "TRUE"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "true"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "TRUE\n"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30 + (std::int64_t{1} << 32), "TRUE"));

  const FrameRates host = {{"first", 25, "TRUE", 25}, {"second", 25, "TRUE", 24.5}};
  EXPECT_EQ(find_frame_rate(host, 25, "TRUE")->type, "first");
}

}  // namespace
}  // namespace pellago
