#include "merge/markers.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "merge/logging_fields.hpp"
#include "merge_files.hpp"

namespace pellago {
namespace {

using merge_test::make_row;
using merge_test::read_data;

// steps_clip.xml: PAL, starting at 01:00:00:00.
ClipTiming pal_from_one_hour() {
  return {25, "FALSE", "NDF", FrameRate{"PAL (25fps)", 25, "FALSE", 25}, 90000};
}

MarkerEntry marker_at(std::string timecode, std::optional<std::string> color = std::nullopt) {
  return {std::move(timecode), std::nullopt, std::nullopt, std::move(color)};
}

TEST(Markers, MarkersStandInReverseOrderAfterMediaAndBeforeACreatedDefaultAngle) {
  Document document = Document::parse_string(read_data("steps_clip.xml"));
  Element clip = document.first("clip");
  const LogRow row =
      make_row({{"Angle", "B"}}, {{"01:00:10:00", "Intro", std::nullopt, "blue"},
                                  {"00:59:59:00", "", "Check <focus> & iris", "turquoise"},
                                  marker_at("01:00:20:00", "blue ")});
  apply_logging_fields(clip, row, document);
  apply_markers(clip, row, pal_from_one_hour());
  EXPECT_EQ(document.write(), read_data("steps_clip_markers.xml"));
}

TEST(Markers, DropFrameClipsPlaceMarkersByDropFrameCounting) {
  Document document = Document::parse_string(read_data("steps_clip.xml"));
  Element clip = document.first("clip");
  const ClipTiming ntsc_drop_frame{30, "TRUE", "DF",
                                   FrameRate{"NTSC/HD (29.97fps)", 30, "TRUE", 29.97}, 107892};
  apply_markers(clip, make_row({}, {marker_at("01:01:00;02")}), ntsc_drop_frame);
  EXPECT_EQ(clip.first("marker").first("in").text(), "1800");
}

TEST(Markers, RateEntryAndMediaAreNeededOnlyForRowsWithMarkers) {
  const std::string xml = read_data("steps_clip.xml");
  Document document = Document::parse_string(xml);
  ClipTiming no_rate = pal_from_one_hour();
  no_rate.rate.reset();
  apply_markers(document.first("clip"), make_row({{"Name", "A001_C003_0612XY"}}), no_rate);
  EXPECT_EQ(document.write(), xml);
  EXPECT_THROW(
      apply_markers(document.first("clip"), make_row({}, {marker_at("01:00:00:00")}), no_rate),
      Error);

  Document without_media =
      Document::parse_string(R"(<xmeml version="5"><clip id="C"><name>C</name></clip></xmeml>)");
  EXPECT_THAT(
      [&] {
        apply_markers(without_media.first("clip"), make_row({}, {marker_at("01:00:00:00")}),
                      pal_from_one_hour());
      },
      testing::ThrowsMessage<Error>(testing::HasSubstr("no <media> element")));
}

}  // namespace
}  // namespace pellago
