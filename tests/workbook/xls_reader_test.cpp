// .xls files written by xlwt and the same sheets as .xlsx written by XlsxWriter
// (data/make_fixtures.py).
#include "workbook/xls_reader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "test_support.hpp"
#include "workbook/workbook.hpp"

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

TEST(XlsReader, CellsKeepTheirKindsAndBlanksAreNotInUse) {
  const Workbook sheet = open_workbook(fixture("cells.xls"), SheetKind::xls);

  EXPECT_EQ(sheet.last_row(), 4);
  EXPECT_EQ(sheet.last_column(), 7);
  EXPECT_EQ(row(sheet, 1),
            (std::vector<Cell>{text("Name"), text("Scene"), text("Take"), text("Date"),
                               text("Time"), text("Stamp"), text("Note")}));
  EXPECT_EQ(row(sheet, 2),
            (std::vector<Cell>{text("C001"), number(12), number(3.25), date(2024, 3, 1),
                               time_of_day(12, 30, 0), date_time(2024, 3, 1, 12, 30, 15),
                               text("  spaced  ")}));
  EXPECT_EQ(row(sheet, 3), (std::vector<Cell>(7, empty)));
  EXPECT_EQ(row(sheet, 4), (std::vector<Cell>{text("Café – 東京"), number(-40000.5), empty, empty,
                                              empty, empty, empty}));
  // One string the file stores once can fill thousands of cells: the sheet's text is capped.
  EXPECT_THAT(
      [] { read_xls(fixture("cells.xls"), {}, 20); },
      ::testing::ThrowsMessage<Error>(
          fixture("cells.xls") +
          ": cannot read the .xls workbook: the worksheet's text passes 20 bytes; refusing it "
          "as a likely bomb"));
}

TEST(XlsReader, FormulasGiveTheirCachedResults) {
  const Workbook sheet = open_workbook(fixture("formulas.xls"), SheetKind::xls);

  EXPECT_EQ(row(sheet, 2), (std::vector<Cell>{date(2011, 5, 6), boolean(true), text("#DIV/0!"),
                                              text(""), text("Cached text"), empty}));
}

TEST(XlsReader, BothFormatsReadTheSameSheetAlike) {
  // 32,767 characters, the most a cell holds: 4,095 times the 8 of "Take 東京 ", then 7 more.
  std::string long_text;
  for (int i = 0; i < 4095; ++i) long_text += "Take 東京 ";
  long_text += "Take 東京";
  for (const char* extension : {"xls", "xlsx"}) {
    SCOPED_TRACE(extension);
    const SheetKind kind = std::string(extension) == "xls" ? SheetKind::xls : SheetKind::xlsx;
    const Workbook cells = open_workbook(fixture(std::string("typed_cells.") + extension), kind);
    EXPECT_EQ(
        row(cells, 2),
        (std::vector<Cell>{text("C001"), boolean(true), boolean(false), date(2011, 5, 6),
                           date(2100, 3, 1), date(9999, 12, 31), date_time(2024, 3, 1, 12, 30, 15),
                           time_of_day(12, 30, 15), text(long_text), number(12)}));

    const Workbook headers =
        open_workbook(fixture(std::string("typed_headers.") + extension), kind);
    EXPECT_EQ(row(headers, 1), (std::vector<Cell>{text("Name"), boolean(true), date(2011, 5, 6),
                                                  date_time(2024, 3, 1, 12, 30, 15),
                                                  time_of_day(12, 30, 15), number(12)}));
  }
}

TEST(XlsReader, UnreadableWorkbooksFailWithOneLineNamingTheFile) {
  EXPECT_EQ(open_workbook(fixture("empty_first.xls"), SheetKind::xls).last_row(), 0);

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"truncated.xls", ": cannot read the .xls workbook: the compound file is damaged"},
      {"damaged_directory.xls", ": cannot read the .xls workbook: the compound file is damaged"},
      {"huge_sector_table.xls", ": cannot read the .xls workbook: the compound file is damaged"},
      {"encrypted.xls", ": cannot read the .xls workbook: it is password-protected (encrypted)"},
      {"bad_record_length.xls",
       ": cannot read the .xls workbook: the workbook records are damaged: a record of type "
       "0x0015 claims 65535 bytes"},
      {"xlsx_renamed.xls", ": not an .xls workbook but a zip package"},
      {"not_a_zip.xlsx", ": not an .xls workbook (no OLE2 compound file header)"},
  };
  for (const auto& [name, expected] : cases) {
    EXPECT_THAT([&] { open_workbook(fixture(name), SheetKind::xls); },
                ::testing::ThrowsMessage<Error>(::testing::StartsWith(fixture(name) + expected)));
  }
}

}  // namespace
}  // namespace pellago
