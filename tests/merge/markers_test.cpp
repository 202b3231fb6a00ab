#include "merge/markers.hpp"

#include <gtest/gtest.h>

#include "merge/logging_fields.hpp"
#include "merge/merge_files.hpp"

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
  const ClipTiming timing = pal_from_one_hour();
  apply_markers(row, place_row(row, clip, timing, false), timing);
  EXPECT_EQ(document.write(), read_data("steps_clip_markers.xml"));
}

}  // namespace
}  // namespace pellago
