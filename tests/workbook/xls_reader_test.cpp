// .xls files written by xlwt (data/make_fixtures.py), read through FreeXL.
#include "workbook/xls_reader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "test_support.hpp"
#include "workbook/workbook.hpp"

namespace pellago {
namespace {

using test_support::empty;
using test_support::fixture;
using test_support::number;
using test_support::row;
using test_support::text;

TEST(XlsReader, CellsKeepTheirKindsAndBlanksAreNotInUse) {
  const Workbook sheet = open_workbook(fixture("cells.xls"), SheetKind::xls);

  EXPECT_EQ(sheet.last_row(), 4);
  EXPECT_EQ(sheet.last_column(), 7);
  EXPECT_EQ(row(sheet, 1),
            (std::vector<Cell>{text("Name"), text("Scene"), text("Take"), text("Date"),
                               text("Time"), text("Stamp"), text("Note")}));
  EXPECT_EQ(row(sheet, 2),
            (std::vector<Cell>{text("C001"), number(12), number(3.25), text("2024-03-01"),
                               text("12:30:00"), text("2024-03-01 12:30:15"), text("  spaced  ")}));
  EXPECT_EQ(row(sheet, 3), (std::vector<Cell>(7, empty)));
  EXPECT_EQ(row(sheet, 4), (std::vector<Cell>{text("Café – 東京"), number(-40000.5), empty, empty,
                                              empty, empty, empty}));
  // One string the file stores once can fill thousands of cells: the sheet's text is capped.
  EXPECT_THAT([] { read_xls(fixture("cells.xls"), 20); },
              ::testing::ThrowsMessage<Error>(fixture("cells.xls") +
                                              ": the worksheet's text passes 20 bytes; refusing it "
                                              "as a likely bomb"));
}

TEST(XlsReader, UnreadableWorkbooksFailWithOneLineNamingTheFile) {
  EXPECT_EQ(open_workbook(fixture("empty_first.xls"), SheetKind::xls).last_row(), 0);

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"truncated.xls", ": cannot read the .xls workbook: the file ends early (truncated?)"},
      {"encrypted.xls", ": the .xls workbook is password-protected (encrypted)"},
      // FreeXL crashes on this one; the child process it runs in takes the blow. (Under
      // AddressSanitizer the child prints its report before it exits.)
      {"bad_record_length.xls", ": the reader "},
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
