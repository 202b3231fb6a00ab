// Numbers and dates shown by their number formats, as read from files written by xlwt and
// XlsxWriter (data/make_fixtures.py): each row holds a value and the text a spreadsheet shows.
#include "workbook/format_code.hpp"

#include <gtest/gtest.h>

#include <variant>

#include "test_support.hpp"
#include "workbook/workbook.hpp"

namespace pellago {
namespace {

std::string shown(const Workbook& sheet, int row) {
  const Cell& cell = sheet.cell(row, 1);
  const std::string_view code = sheet.number_format(row, 1);
  if (const auto* date = std::get_if<DateTime>(&cell)) return format_date_time(*date, code);
  return format_number(std::get<double>(cell), code);
}

TEST(FormatCode, CellsOfBothFormatsShowAsTheSpreadsheetShowsThem) {
  for (const auto& [file, kind] :
       {std::pair{"shown.xls", SheetKind::xls}, std::pair{"shown.xlsx", SheetKind::xlsx}}) {
    const Workbook sheet = open_workbook(test_support::fixture(file), kind);
    ASSERT_GT(sheet.last_row(), 20) << file;
    for (int row = 1; row <= sheet.last_row(); ++row) {
      EXPECT_EQ(shown(sheet, row), std::get<std::string>(sheet.cell(row, 2)))
          << file << " row " << row << " under \"" << sheet.number_format(row, 1) << "\"";
    }
  }
}

TEST(FormatCode, EdgesOfNumbersAndDates) {
  EXPECT_EQ(format_number(0.00001, ""), "0.00001");
  EXPECT_EQ(format_number(1e-12, ""), "1E-12");
  EXPECT_EQ(format_number(-0.001, "0"), "0");  // rounds to zero: no sign
  EXPECT_EQ(format_number(2.5, "0"), "3");     // halves away from zero
  EXPECT_EQ(format_number(0.99, "# ?/?"), "1");
  EXPECT_EQ(format_number(5, "##0.0E+0"), "5.0E+0");
  EXPECT_EQ(format_number(12345, "##0.0E+0"), "12.3E+3");
  EXPECT_EQ(format_number(45000, "d-mmm"), "45000");  // a date code for a number shows General

  const DateTime time{DateKind::time, 0, 0, 0, 9, 7, 3};
  EXPECT_EQ(format_date_time(time, "h:mm:ss a/p"), "9:07:03 a");
  EXPECT_EQ(format_date_time(time, "[mm]:ss"), "547:03");
  EXPECT_EQ(format_date_time(time, ""), "9:07:03");
  const DateTime date{DateKind::date, 2026, 12, 31};
  EXPECT_EQ(format_date_time(date, "[$-F800]dddd, mmmm dd, yyyy"), "Thursday, December 31, 2026");
  EXPECT_EQ(format_date_time(date, "mmmmm yy"), "D 26");
  EXPECT_EQ(format_date_time(date, "\"Day \"d"), "Day 31");
}

}  // namespace
}  // namespace pellago
