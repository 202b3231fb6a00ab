#include "timecode/clip_timing.hpp"

#include <gtest/gtest.h>

#include <string>

#include "error.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {
namespace {

Element clip_with_id(const Document& document, const std::string& id) {
  return document.first_xpath("//clip[@id='" + id + "']");
}

// A one-clip export whose clip holds `inner` after its name.
Document export_with_clip(const std::string& inner) {
  return Document::parse_string(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
      "\t<clip id=\"A001_C001\">\n\t\t<name>A001_C001</name>\n\t\t<duration>100</duration>\n" +
      inner + "\t</clip>\n</xmeml>\n");
}

std::string error_of(const Document& document) {
  try {
    resolve_clip_timing(document.first("clip"), FRAME_RATES);
  } catch (const Error& e) {
    return e.what();
  }
  return "no error";
}

class ClipTimingOfExport : public ::testing::Test {
 protected:
  Document document = Document::parse_file(PELLAGO_TEST_DATA "/master_clips.xml");
};

TEST_F(ClipTimingOfExport, ReadsTheFirstRateDisplayFormatAndFrameAtAnyDepth) {
  const ClipTiming ntsc =
      resolve_clip_timing(clip_with_id(document, "B002_C011_0714QK"), FRAME_RATES);
  EXPECT_EQ(ntsc.timebase, 30);
  EXPECT_EQ(ntsc.ntsc, "TRUE");
  EXPECT_EQ(ntsc.display_format, "DF");
  EXPECT_EQ(ntsc.start_frame, 1516552);
  EXPECT_EQ(rate_entry(ntsc).type, "NTSC/HD (29.97fps)");
  EXPECT_EQ(to_frames("14:03:22;10", rate_entry(ntsc).fcp_rate, ntsc.display_format),
            ntsc.start_frame);

  // No rate of its own: the clip item's rate comes before the file's.
  const ClipTiming film =
      resolve_clip_timing(clip_with_id(document, "C004_C002_0715RT"), FRAME_RATES);
  EXPECT_EQ(film.timebase, 24);
  EXPECT_EQ(film.ntsc, "TRUE");
  EXPECT_EQ(film.display_format, "NDF");
  EXPECT_EQ(film.start_frame, 864000);
  EXPECT_EQ(rate_entry(film).fcp_rate, 23.976);
}

TEST_F(ClipTimingOfExport, DefaultsWithoutTimecodeAndTimebaseReadAsInteger) {
  const ClipTiming timing =
      resolve_clip_timing(clip_with_id(document, "D001_C007_0716AB"), FRAME_RATES);
  EXPECT_EQ(timing.timebase, 30);
  EXPECT_EQ(timing.display_format, "NDF");
  EXPECT_EQ(timing.start_frame, 0);
  EXPECT_EQ(rate_entry(timing).type, "Video/HD (30fps)");
}

TEST_F(ClipTimingOfExport, UnknownRateResolvesButHasNoRateEntry) {
  const ClipTiming timing =
      resolve_clip_timing(clip_with_id(document, "E003_C001_0717PL"), FRAME_RATES);
  EXPECT_EQ(timing.timebase, 25);
  EXPECT_FALSE(timing.rate);
  try {
    rate_entry(timing);
    FAIL() << "rate_entry returned for 25/TRUE";
  } catch (const Error& e) {
    EXPECT_STREQ(e.what(), "timebase 25 with ntsc \"TRUE\" is not one of the known frame rates");
  }
}

TEST(ClipTiming, NtscTextIsKeptUnchangedAndMatchedExactly) {
  const Document document = export_with_clip(
      "\t\t<rate>\n\t\t\t<ntsc> TRUE</ntsc>\n\t\t\t<timebase>abc</timebase>\n\t\t</rate>\n");
  const ClipTiming timing = resolve_clip_timing(document.first("clip"), FRAME_RATES);
  EXPECT_EQ(timing.ntsc, " TRUE");
  EXPECT_EQ(timing.timebase, 0);
  EXPECT_FALSE(timing.rate);
}

TEST(ClipTiming, MissingTimebaseOrNtscUnderARateIsAnError) {
  EXPECT_EQ(error_of(export_with_clip("\t\t<rate>\n\t\t\t<ntsc>TRUE</ntsc>\n\t\t</rate>\n")),
            "no <rate><timebase> element");
  EXPECT_EQ(error_of(export_with_clip("\t\t<rate>\n\t\t\t<timebase>30</timebase>\n\t\t</rate>\n")),
            "no <rate><ntsc> element");
  // A timebase and ntsc outside any rate element do not count.
  EXPECT_EQ(error_of(export_with_clip("\t\t<timebase>30</timebase>\n\t\t<ntsc>TRUE</ntsc>\n")),
            "no <rate><timebase> element");
}

}  // namespace
}  // namespace pellago
