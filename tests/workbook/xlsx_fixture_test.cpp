// Hand-written and hostile .xlsx packages from data/make_fixtures.py.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "error.hpp"
#include "test_support.hpp"
#include "workbook/workbook.hpp"
#include "workbook/xlsx_reader.hpp"

namespace pellago {
namespace {

using test_support::boolean;
using test_support::date;
using test_support::date_time;
using test_support::empty;
using test_support::fixture;
using test_support::number;
using test_support::row;
using test_support::text;
using test_support::time_of_day;

TEST(XlsxFixtures, HandWrittenPackagesReadEveryKindOfCellWhereverTheirPartsAre) {
  // The main part is found through the package relationships, away from xl/.
  WorkbookReading reading = start_reading_workbook(fixture("relocated.xlsx"), SheetKind::xlsx);
  const Workbook relocated = reading.finish();
  EXPECT_EQ(relocated.last_row(), 2);
  EXPECT_EQ(relocated.last_column(), 3);
  EXPECT_EQ(relocated.cell(2, 3), text("moved"));

  // The first sheet of workbook.xml is part sheet3.xml (absolute target); rows and cells without
  // references follow their neighbours; dates count from 1904. Row 1 can be used before the rest
  // is read.
  const std::vector<Cell> headers = {
      text("Name"), text("Scene"), text("Rich"), text("Kanji"), empty, empty, empty, empty, empty};
  reading = start_reading_workbook(fixture("handmade.xlsx"), SheetKind::xlsx);
  EXPECT_EQ(row(reading.sheet(), 1), headers);
  const Workbook sheet = reading.finish();

  EXPECT_EQ(sheet.last_row(), 4);
  EXPECT_EQ(sheet.last_column(), 9);
  EXPECT_EQ(row(sheet, 1), headers);
  EXPECT_EQ(row(sheet, 2),
            (std::vector<Cell>{date(2024, 2, 29), time_of_day(12, 0, 0),
                               date_time(2024, 2, 29, 18, 0, 0), number(2.5), boolean(true),
                               boolean(false), text("#N/A"), text("Name!"), empty}));
  EXPECT_EQ(row(sheet, 3), (std::vector<Cell>(9, empty)));
  EXPECT_EQ(row(sheet, 4),
            (std::vector<Cell>{empty, empty, text("  two  spaces "), number(-7),
                               text("line\r\nbreak"), text("_x0041_ & <tag>"), text(""),
                               date_time(2024, 3, 1, 12, 30, 15), text("2024-13-01")}));
}

std::string read_error(const std::string& path, const XlsxLimits& limits = {}) {
  try {
    read_xlsx(path, limits);
  } catch (const Error& error) {
    return error.what();
  }
  return "no error";
}

TEST(XlsxFixtures, BrokenPackagesFailWithOneLineNamingTheFile) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"not_a_zip.xlsx", ": not an .xlsx workbook (not a zip package)"},
      {"xls_renamed.xlsx", ": not an .xlsx workbook but an OLE2 compound file"},
      {"truncated.xlsx", ": damaged .xlsx package: Not a zip archive"},
      {"no_workbook.xlsx", ": the package has no workbook part \"xl/workbook.xml\""},
      {"missing_sheet.xlsx",
       ": the part \"xl/worksheets/sheet1.xml\" of worksheet \"Log\" is missing"},
      {"malformed_sheet.xlsx",
       ", part \"xl/worksheets/sheet1.xml\": malformed XML at line 2: Opening and ending tag "
       "mismatch"},
      {"doctype.xlsx",
       ", part \"xl/worksheets/sheet1.xml\": a document type declaration, which workbook parts "
       "never carry"},
      {"out_of_order.xlsx",
       ", part \"xl/worksheets/sheet1.xml\": cell B1 comes after cell C1: the cells are out of "
       "order"},
      {"damaged_data.xlsx", ": damaged data in part \"xl/worksheets/sheet3.xml\": CRC error"},
      {"bad_shared_index.xlsx",
       ", part \"xl/worksheets/sheet1.xml\": cell B1 refers to shared string \"5\", but the table "
       "holds 1"},
  };
  for (const auto& [name, expected] : cases) {
    ::testing::internal::CaptureStderr();
    const std::string message = read_error(fixture(name));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << name;
    EXPECT_THAT(message, ::testing::StartsWith(fixture(name) + expected));
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
  }
}

// Damage in row 1 fails the first step of reading, damage below it only the second, which may run
// on another thread.
TEST(XlsxFixtures, DamageBelowTheFirstRowsFailsOnlyTheRest) {
  EXPECT_THAT([] { start_reading_workbook(fixture("out_of_order.xlsx"), SheetKind::xlsx); },
              ::testing::ThrowsMessage<Error>(::testing::HasSubstr("cell B1 comes after cell C1")));
  WorkbookReading reading =
      start_reading_workbook(fixture("late_out_of_order.xlsx"), SheetKind::xlsx);
  EXPECT_EQ(reading.sheet().cell(1, 1), text("Name"));
  auto rest = std::async(std::launch::async, [&reading] { return reading.finish(); });
  EXPECT_THAT([&rest] { rest.get(); },
              ::testing::ThrowsMessage<Error>(::testing::HasSubstr(
                  ", part \"xl/worksheets/sheet1.xml\": cell A23 comes after cell B23")));
}

TEST(XlsxFixtures, PartsAreCappedAsTheyUnpack) {
  // 4 MiB of markup packed into a few KiB: past a 1 MiB cap it is refused as a bomb; under the
  // real cap it reads through to an empty sheet.
  const std::string bomb = fixture("bomb.xlsx");
  EXPECT_THAT(read_error(bomb, {.worksheet_part_bytes = 1 << 20}),
              ::testing::StartsWith(bomb + ": part \"xl/worksheets/sheet1.xml\" unpacks to more "
                                           "than 1 MiB"));
  EXPECT_THAT(read_error(fixture("handmade.xlsx"), {.other_part_bytes = 100}),
              ::testing::HasSubstr("unpacks to more than 100 bytes"));
  EXPECT_THAT(read_error(fixture("handmade.xlsx"), {.cell_text_bytes = 20}),
              ::testing::HasSubstr("the worksheet's text passes 20 bytes"));
  // Every cell that refers to a shared string counts its whole text.
  EXPECT_THAT(read_error(fixture("shared_bomb.xlsx")),
              ::testing::HasSubstr("the worksheet's text passes 256 MiB"));
  EXPECT_EQ(open_workbook(bomb, SheetKind::xlsx).last_row(), 0);
}

}  // namespace
}  // namespace pellago
