#include "merge/logging_fields.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "merge/merge_files.hpp"

namespace pellago {
namespace {

using merge_test::make_row;
using merge_test::read_data;
using merge_test::replace_all;

std::string logged(const std::string& xml, const LogRow& row) {
  Document document = Document::parse_string(xml);
  apply_logging_fields(document.first("clip"), row, document);
  return document.write();
}

// steps_clip.xml logs scene, take, note and good both on the clip and on its clip item, and
// labels on both; it has a clipcommenta but no description, defaultangle or clipcommentb.
TEST(LoggingFields, EveryMatchFieldsSetAllAndFirstMatchFieldsSetOrCreateTheFirst) {
  const LogRow row = make_row({{"Name", "A001_C003_0612XY"},
                               {"Good", "Yes"},
                               {"Label", "Circle"},
                               {"Label 2", "VFX"},
                               {"Description", "Wide, dolly in"},
                               {"Scene", "14A"},
                               {"Shot/Take", "2"},
                               {"Angle", "B"},
                               {"Log Note", "Boom in shot"},
                               {"Master Comment 1", "Day 12"},
                               {"Master Comment 4", "Reel A001"},
                               {"Comment 1", "Focus soft"},
                               {"Comment 2", "Use for trailer"}});
  EXPECT_EQ(logged(read_data("steps_clip.xml"), row), read_data("steps_clip_logged.xml"));
}

// A field that replaces an element's text takes the elements inside it out of the clip: later
// fields set, or insert next to, what the clip still holds.
TEST(LoggingFields, LaterFieldsSeeWhatEarlierFieldsLeft) {
  const std::string clip =
      "<xmeml><clip id=\"c\"><name>c</name>"
      "<logginginfo><good><labels><label2>inner</label2></labels></good></logginginfo>"
      "<labels><label2>outer</label2></labels>"
      "<comments><mastercomment1><comments><clipcommenta>inner</clipcommenta></comments>"
      "</mastercomment1><mastercomment4/></comments></clip></xmeml>";
  const LogRow row = make_row(
      {{"Good", "yes"}, {"Label 2", "VFX"}, {"Master Comment 1", "m"}, {"Comment 1", "a"}});
  const std::string expected =
      "<xmeml><clip id=\"c\"><name>c</name><logginginfo><good>TRUE</good></logginginfo>"
      "<labels><label2>VFX</label2></labels><comments><mastercomment1>m</mastercomment1>"
      "<mastercomment4/><clipcommenta>a</clipcommenta></comments></clip></xmeml>";
  EXPECT_EQ(logged(clip, row), Document::parse_string(expected).write());
}

// The classic rules: TRUE only for yes or y in any letter case. The default rules: the words
// loggers use for yes and no; any other word writes nothing.
TEST(LoggingFields, GoodReadsTheWordsTheRulesKnow) {
  const std::pair<std::string, std::string> classic[] = {
      {"yEs", "TRUE"},   {"Y", "TRUE"},     {"y", "TRUE"}, {" yes", "FALSE"},
      {"yes ", "FALSE"}, {"true", "FALSE"}, {"", "FALSE"}, {"yess", "FALSE"}};
  for (const auto& [cell, flag] : classic) EXPECT_EQ(good_flag(cell), flag) << cell;
  const std::pair<std::string, std::optional<std::string>> words[] = {
      {" Yes ", "TRUE"},  {"TRUE", "TRUE"},     {"x", "TRUE"},         {"\u2714", "TRUE"},
      {"1.0", "TRUE"},    {"No", "FALSE"},      {"n", "FALSE"},        {"0", "FALSE"},
      {"false", "FALSE"}, {"ok", std::nullopt}, {"yess", std::nullopt}};
  for (const auto& [cell, flag] : words) EXPECT_EQ(good_flag(cell, default_rules()), flag) << cell;

  Document document = Document::parse_string(read_data("steps_clip.xml"));
  Element clip = document.first("clip");
  const std::string before = document.write();
  apply_logging_fields(clip, make_row({{"Good", "maybe"}}), document, default_rules());
  EXPECT_EQ(document.write(), before);
  apply_logging_fields(clip, make_row({{"Good", "\u2713"}}), document, default_rules());
  for (Element good : clip.all("logginginfo/good")) EXPECT_EQ(good.text(), "TRUE");
}

TEST(LoggingFields, AbsentColumnsAreSkippedAndEmptyCellsClearTheirElements) {
  const std::string clip = read_data("steps_clip.xml");
  const LogRow row = make_row({{"good", "yes"}, {"Label2", "VFX"}, {"Scene", ""}});
  EXPECT_EQ(logged(clip, row), replace_all(clip, "<scene>12</scene>", "<scene/>"));
}

TEST(LoggingFields, MissingElementsAndAnchorsFailNamingThem) {
  const std::string bare = R"(<xmeml version="5"><clip id="C003"><name>C003</name></clip></xmeml>)";
  const std::pair<std::string, std::string> cases[] = {
      {"Label 2", R"(no <labels><label2> element to hold "Label 2")"},
      {"Label", R"(no <labels><label> element for "Label", and no <labels><label2> element )"
                R"(to insert one before)"},
      {"Comment 2", R"(no <comments><clipcommentb> element for "Comment 2", and no )"
                    R"(<comments><mastercomment4> element to insert one after)"}};
  for (const auto& [header, message] : cases) {
    EXPECT_THAT(
        [&] {
          logged(bare, make_row({{header, "x"}}));
        },
        testing::ThrowsMessage<Error>(testing::StrEq(message)));
  }
}

}  // namespace
}  // namespace pellago
