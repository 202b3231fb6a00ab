#include "workbook/workbook.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "error.hpp"
#include "test_support.hpp"

namespace pellago {
namespace {

using test_support::empty;
using test_support::number;
using test_support::row;
using test_support::text;

TEST(Workbook, CellsComeBackWhereverAndInWhateverOrderTheyWereSet) {
  Workbook sheet;
  sheet.set_cell(3, 5, text("late"));
  sheet.set_cell(1, 2, number(1));
  sheet.set_cell(3, 1, text("first"));
  sheet.set_cell(3, 3, number(2));
  sheet.set_cell(3, 3, number(4));        // replaced
  sheet.set_cell(4, 9, Cell());           // an empty value is not a cell in use
  sheet.set_cell(0, 1, text("outside"));  // rows and columns start at 1
  sheet.set_cell(1, -2, text("outside"));

  EXPECT_EQ(sheet.last_row(), 3);
  EXPECT_EQ(sheet.last_column(), 5);
  EXPECT_EQ(row(sheet, 1), (std::vector<Cell>{empty, number(1), empty, empty, empty}));
  EXPECT_EQ(row(sheet, 2), (std::vector<Cell>(5, empty)));
  EXPECT_EQ(row(sheet, 3),
            (std::vector<Cell>{text("first"), empty, number(4), empty, text("late")}));
  EXPECT_EQ(sheet.cell(4, 1), empty);
  EXPECT_EQ(sheet.cell(0, 0), empty);
  EXPECT_EQ(sheet.cell(1, 6), empty);
}

TEST(Workbook, SheetKindIsTheExactExtensionOfTheLastComponent) {
  EXPECT_EQ(sheet_kind("log.xls"), SheetKind::xls);
  EXPECT_EQ(sheet_kind("dir.xlsx/Log Sheet.xlsx"), SheetKind::xlsx);
  for (const char* path : {"log.XLS", "log.xls.bak", "log", ".xls", "dir.xls/log", "log.xlsm"}) {
    EXPECT_EQ(sheet_kind(path), SheetKind::not_a_log_sheet) << path;
  }
  EXPECT_EQ(sheet_kind_ignoring_case("log.XLS"), SheetKind::xls);
  EXPECT_EQ(sheet_kind_ignoring_case("LOG.Xlsx"), SheetKind::xlsx);
  EXPECT_EQ(sheet_kind_ignoring_case("log.XLSM"), SheetKind::not_a_log_sheet);
}

TEST(Workbook, FilesThatCannotBeReadCarryTheirSystemError) {
  const auto error_of = [](const std::string& path, SheetKind kind) {
    try {
      open_workbook(path, kind);
    } catch (const Error& error) {
      return error;
    }
    return Error("no error");
  };
  test_support::TempDir dir;
  const std::string missing = dir.file("missing.xlsx");
  for (SheetKind kind : {SheetKind::xlsx, SheetKind::xls}) {
    const Error error = error_of(missing, kind);
    EXPECT_EQ(error.what(), "cannot read \"" + missing + "\": No such file or directory");
    EXPECT_EQ(error.system_error, ENOENT);
  }
  std::filesystem::create_directory(dir.file("folder.xls"));
  EXPECT_EQ(error_of(dir.file("folder.xls"), SheetKind::xls).system_error, EISDIR);
}

}  // namespace
}  // namespace pellago
