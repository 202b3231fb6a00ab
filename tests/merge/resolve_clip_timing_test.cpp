#include "merge/resolve_clip_timing.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "error.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {
namespace {

using ::testing::ThrowsMessage;

ClipTiming timing_of(const Document& document, const std::string& id) {
  return resolve_clip_timing(document.first_xpath("//clip[@id='" + id + "']"), FRAME_RATES);
}

// The timing of a one-clip export whose clip holds `inner` after its name.
ClipTiming timing_of_clip(const std::string& inner) {
  const Document document = Document::parse_string(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
      "\t<clip id=\"A\">\n\t\t<name>A</name>\n\t\t<duration>100</duration>\n" +
      inner + "\t</clip>\n</xmeml>\n");
  return timing_of(document, "A");
}

TEST(FrameRates, LookupTakesTheFirstRowWhosePairMatchesExactly) {
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "true"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30, "TRUE\n"));
  EXPECT_FALSE(find_frame_rate(FRAME_RATES, 30 + (std::int64_t{1} << 32), "TRUE"));

  const FrameRates host = {{"first", 25, "TRUE", 25}, {"second", 25, "TRUE", 24.5}};
  EXPECT_EQ(find_frame_rate(host, 25, "TRUE")->type, "first");
}

class ClipTimingOfExport : public ::testing::Test {
 protected:
  Document document = Document::parse_file(PELLAGO_TEST_DATA "/timed_clips.xml");
};

TEST_F(ClipTimingOfExport, ReadsTheFirstRateDisplayFormatAndFrameAtAnyDepth) {
  const ClipTiming ntsc = timing_of(document, "B002_C011_0714QK");
  EXPECT_EQ(ntsc.timebase, 30);
  EXPECT_EQ(ntsc.ntsc, "TRUE");
  EXPECT_EQ(ntsc.display_format, "DF");
  EXPECT_EQ(ntsc.start_frame, 1516552);
  EXPECT_EQ(rate_entry(ntsc).type, "NTSC/HD (29.97fps)");
  EXPECT_EQ(to_frames("14:03:22;10", rate_entry(ntsc).fcp_rate, ntsc.display_format),
            ntsc.start_frame);

  // No rate of its own: the clip item's rate comes before the file's.
  const ClipTiming film = timing_of(document, "C004_C002_0715RT");
  EXPECT_EQ(film.timebase, 24);
  EXPECT_EQ(film.ntsc, "TRUE");
  EXPECT_EQ(film.display_format, "NDF");
  EXPECT_EQ(film.start_frame, 864000);
  EXPECT_EQ(rate_entry(film).fcp_rate, 23.976);
}

TEST_F(ClipTimingOfExport, DefaultsWithoutTimecodeAndUnknownRatesHaveNoRateEntry) {
  const ClipTiming plain = timing_of(document, "D001_C007_0716AB");
  EXPECT_EQ(plain.timebase, 30);
  EXPECT_EQ(plain.display_format, "NDF");
  EXPECT_EQ(plain.start_frame, 0);
  EXPECT_EQ(rate_entry(plain).type, "Video/HD (30fps)");

  const ClipTiming unknown = timing_of(document, "E003_C001_0717PL");
  EXPECT_EQ(unknown.timebase, 25);
  EXPECT_FALSE(unknown.rate);
  EXPECT_THAT(
      [&] { rate_entry(unknown); },
      ThrowsMessage<Error>("timebase 25 with ntsc \"TRUE\" is not one of the known frame rates"));
}

TEST(ClipTiming, NtscIsMatchedExactlyAndBothRateElementsAreRequired) {
  const ClipTiming timing = timing_of_clip(
      "\t\t<rate>\n\t\t\t<ntsc> TRUE</ntsc>\n\t\t\t<timebase>abc</timebase>\n"
      "\t\t</rate>\n");
  EXPECT_EQ(timing.ntsc, " TRUE");
  EXPECT_EQ(timing.timebase, 0);
  EXPECT_FALSE(timing.rate);

  EXPECT_THAT([] { timing_of_clip("\t\t<rate>\n\t\t\t<ntsc>TRUE</ntsc>\n\t\t</rate>\n"); },
              ThrowsMessage<Error>("no <rate><timebase> element"));
  EXPECT_THAT([] { timing_of_clip("\t\t<rate>\n\t\t\t<timebase>30</timebase>\n\t\t</rate>\n"); },
              ThrowsMessage<Error>("no <rate><ntsc> element"));
  // A timebase and ntsc outside any rate element do not count.
  EXPECT_THAT([] { timing_of_clip("\t\t<timebase>30</timebase>\n\t\t<ntsc>TRUE</ntsc>\n"); },
              ThrowsMessage<Error>("no <rate><timebase> element"));
}

}  // namespace
}  // namespace pellago
