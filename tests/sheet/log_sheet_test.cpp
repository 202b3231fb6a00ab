#include "sheet/log_sheet.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "merge/merge_files.hpp"

namespace pellago {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Row = std::vector<Cell>;

Workbook sheet(const std::vector<Row>& rows) {
  Workbook workbook;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < rows[r].size(); ++c) {
      workbook.set_cell(static_cast<int>(r) + 1, static_cast<int>(c) + 1, rows[r][c]);
    }
  }
  return workbook;
}

std::vector<LogRow> log_rows(const Workbook& workbook) {
  return read_log_rows(workbook, read_header_row(workbook));
}

// "header=text" for every ordinary field, in the order of the shared headers.
std::vector<std::string> fields(const LogRow& row) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < row.headers->size(); ++i) {
    texts.push_back((*row.headers)[i] + "=" + row.value(i));
  }
  return texts;
}

// "timecode name=... comment=... color=..." with absent keys left out.
std::vector<std::string> markers(const LogRow& row) {
  std::vector<std::string> texts;
  for (const MarkerEntry& marker : row.markers) {
    std::string text = marker.timecode;
    if (marker.name) text += " name=" + *marker.name;
    if (marker.comment) text += " comment=" + *marker.comment;
    if (marker.color) text += " color=" + *marker.color;
    texts.push_back(text);
  }
  return texts;
}

const Row kTwoMarkerHeaders{"Name",         "Scene",           "Marker Timecode", "Marker Name",
                            "Marker Color", "Marker Timecode", "Marker Comment"};

TEST(LogSheet, MarkerGroupColumnsComeInAnyOrderAndTheLastOneWins) {
  const auto rows = log_rows(sheet({
      {"Marker Name", "Marker Color", "Marker Timecode", "Marker Color", "Marker Name",
       "Marker Name", "Marker Timecode"},
      {"Dropped", "Blue", "00:00:01:00", "GREEN Été", "First", "Second", "00:00:02:00"},
  }));
  EXPECT_THAT(markers(rows[0]),
              ElementsAre("00:00:01:00 name=Second color=green Été", "00:00:02:00"));
}

TEST(LogSheet, OnlyTheFourExactMarkerHeadersMakeMarkers) {
  const auto rows = log_rows(sheet({
      {"marker timecode", "Marker Timecode ", "Markers", "markers", "Marker", "Name"},
      {"01:00:00:00", "01:00:01:00", "x", "y", "z", "C001"},
  }));
  EXPECT_THAT(fields(rows[0]),
              ElementsAre("marker timecode=01:00:00:00", "markers=y", "Name=C001"));
  EXPECT_THAT(rows[0].markers, IsEmpty());
  EXPECT_EQ(rows[0].field("Marker Timecode "), nullptr);
  EXPECT_EQ(rows[0].field("Markers"), nullptr);
}

TEST(LogSheet, FieldsTellAbsentFromEmptyAndKeepTheRightHandDuplicate) {
  const auto rows = log_rows(sheet({
      {"Scene", "Name", "Scene"},
      {"1", 101.0, "2"},
      {"3", Cell{}, Cell{}},
  }));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_THAT(fields(rows[0]), ElementsAre("Scene=2", "Name=101.0"));
  EXPECT_THAT(fields(rows[1]), ElementsAre("Scene=", "Name="));
  ASSERT_NE(rows[1].field("Name"), nullptr);
  EXPECT_EQ(*rows[1].field("Name"), "");
  EXPECT_EQ(rows[0].field("Good"), nullptr);
  EXPECT_EQ(rows[0].field("name"), nullptr);
  EXPECT_EQ(rows[0].headers, rows[1].headers);
}

TEST(LogSheet, HeaderThatIsNotTextFailsAtTheFirstDataRowOnly) {
  const auto error_of = [](const Workbook& workbook) -> std::string {
    try {
      log_rows(workbook);
    } catch (const Error& e) {
      return e.what();
    }
    return "no error";
  };
  EXPECT_THAT(error_of(sheet({{"Name", Cell{}, "Scene"}, {"C001"}})),
              HasSubstr("column B (2) has no header text"));
  EXPECT_THAT(error_of(sheet({{"Name", "Scene", "In", 12.0}, {"C001"}})),
              HasSubstr("column D (4) header is the number 12.0, not text"));
  EXPECT_THAT(error_of(sheet({{"Name", true}, {"C001"}})),
              HasSubstr("column B (2) header is the boolean true, not text"));
  EXPECT_THAT(error_of(sheet({{"Name", DateTime{DateKind::date, 2011, 5, 6}}, {"C001"}})),
              HasSubstr("column B (2) header is the date 2011-05-06, not text"));
  Row wide(27, Cell{"Scene"});
  wide.emplace_back();
  wide.emplace_back("Name");
  EXPECT_THAT(error_of(sheet({wide, {"C001"}})), HasSubstr("column AB (28)"));

  const Workbook header_only = sheet({{"Name", Cell{}, "Scene"}});
  EXPECT_THAT(read_header_row(header_only), ElementsAre(Cell{"Name"}, Cell{}, Cell{"Scene"}));
  EXPECT_THAT(log_rows(header_only), IsEmpty());

  EXPECT_THAT(read_header_row(Workbook{}), IsEmpty());
  EXPECT_EQ(error_of(Workbook{}), "the first worksheet has no cell in use");
}

TEST(LogSheet, TextsXmlCannotCarryNameTheRowColumnAndCharacter) {
  const auto error_of = [](const std::string& text) -> std::string {
    try {
      log_rows(sheet({{"Name", "Scene"}, {"C001"}, {"C002", text}}));
    } catch (const Error& e) {
      return e.what();
    }
    return "no error";
  };
  EXPECT_EQ(error_of("\x1B"),
            "sheet row 3, column B (2): the cell holds U+001B, which XML 1.0 cannot carry");
  EXPECT_THAT(error_of("caf\xE9"), HasSubstr("holds the byte 0xE9 that is not UTF-8"));
  EXPECT_THAT(error_of("\xED\xA0\x80"), HasSubstr("holds the byte 0xED that is not UTF-8"));
  EXPECT_THAT(error_of("\xC0\xAF"), HasSubstr("holds the byte 0xC0 that is not UTF-8"));
  EXPECT_THAT(error_of("\xEF\xBF\xBE"), HasSubstr("holds U+FFFE"));
  EXPECT_EQ(error_of("\t\n\r \xEF\xBF\xBD \xF4\x8F\xBF\xBF"), "no error");
}

using LogSheetFile = merge_test::ScratchFolderTest;

// An .xlsx written by libxlsxwriter, read as the merge reads it.
TEST_F(LogSheetFile, MarkerGroupsBecomeEntriesListedOnlyWithATimecode) {
  merge_test::write_xlsx(
      path("log.xlsx"),
      {kTwoMarkerHeaders,
       {"C001", 12.0, "01:00:10:00", "Intro", "Red", "01:00:20:00", "Check focus"},
       {"C002", 12.0, "", "Intro", "Red", "01:00:20:00", "Check focus"},
       {"C003", 12.0, "01:00:10:00", "Intro", "Red", "", "Check focus"},
       {},
       {101.0}});
  const auto rows = log_rows(open_workbook(path("log.xlsx"), SheetKind::xlsx));
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_THAT(fields(rows[0]), ElementsAre("Name=C001", "Scene=12.0"));
  EXPECT_THAT(markers(rows[0]),
              ElementsAre("01:00:10:00 name=Intro color=red", "01:00:20:00 comment=Check focus"));
  EXPECT_EQ(rows[0].field("Marker Timecode"), nullptr);
  EXPECT_THAT(markers(rows[1]), ElementsAre("01:00:20:00 comment=Check focus"));
  EXPECT_THAT(markers(rows[2]), ElementsAre("01:00:10:00 name=Intro color=red"));
  EXPECT_THAT(fields(rows[3]), ElementsAre("Name=", "Scene="));
  EXPECT_THAT(fields(rows[4]), ElementsAre("Name=101.0", "Scene="));
}

// Notes on the first worksheet and the log, below a title, on the second: in an .xlsx from
// libxlsxwriter and an .xls from xlwt.
TEST_F(LogSheetFile, TheWorksheetReadIsTheOneNamedOrTheFirstWithANameHeader) {
  merge_test::write_xlsx_sheets(
      path("two.xlsx"), {{"Notes", {{"Shoot day 1"}, {"Camera A only"}}},
                         {"Log", {{"Day 1"}, {}, {"Clip Name", "Scene"}, {"A001_C001", 12.0}}}});
  for (const auto& [file, kind] :
       {std::pair{path("two.xlsx"), SheetKind::xlsx},
        std::pair{merge_test::source_path("tests/workbook/data/two_sheets.xls").string(),
                  SheetKind::xls}}) {
    SCOPED_TRACE(file);
    EXPECT_THAT(worksheet_names(file, kind), ElementsAre("Notes", "Log"));
    const Workbook log = open_workbook(file, kind, log_sheet_choice(std::nullopt, true));
    EXPECT_EQ(log.name(), "Log");
    EXPECT_EQ(find_header_row(log), 3);
    EXPECT_EQ(open_workbook(file, kind, log_sheet_choice(std::nullopt, false)).name(), "Notes");
    EXPECT_EQ(open_workbook(file, kind, log_sheet_choice("Notes", true)).name(), "Notes");
    try {
      open_workbook(file, kind, log_sheet_choice("Day 2", true));
      ADD_FAILURE() << "no error";
    } catch (const Error& error) {
      EXPECT_EQ(std::string(error.what()),
                file +
                    ": the workbook has no worksheet named \"Day 2\"; its worksheets are "
                    "\"Notes\", \"Log\"");
    }
  }
}

}  // namespace
}  // namespace pellago
