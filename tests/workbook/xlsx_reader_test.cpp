// .xlsx files written by libxlsxwriter, read back through open_workbook.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include "error.hpp"
#include "test_support.hpp"
#include "workbook/workbook.hpp"

namespace pellago {
namespace {

using test_support::date;
using test_support::date_time;
using test_support::empty;
using test_support::number;
using test_support::row;
using test_support::text;
using test_support::time_of_day;

// Owns a libxlsxwriter workbook being written; close() writes the file.
class XlsxFile {
 public:
  explicit XlsxFile(const std::string& path) : path_(path), book_(workbook_new(path.c_str())) {}
  ~XlsxFile() {
    if (book_ != nullptr) workbook_close(book_);
  }
  lxw_worksheet* sheet(const char* name = nullptr) { return workbook_add_worksheet(book_, name); }
  lxw_format* format(const char* number_format) {
    lxw_format* format = workbook_add_format(book_);
    format_set_num_format(format, number_format);
    return format;
  }
  lxw_format* builtin_format(std::uint8_t index) {
    lxw_format* format = workbook_add_format(book_);
    format_set_num_format_index(format, index);
    return format;
  }
  lxw_workbook* book() { return book_; }
  Workbook close_and_open() {
    EXPECT_EQ(workbook_close(book_), LXW_NO_ERROR);
    book_ = nullptr;
    return open_workbook(path_, SheetKind::xlsx);
  }

 private:
  std::string path_;
  lxw_workbook* book_;
};

TEST(XlsxReader, SharedStringsNumbersAndBlanksKeepTheirPlaces) {
  test_support::TempDir dir;
  XlsxFile file(dir.file("log.xlsx"));
  lxw_worksheet* sheet = file.sheet("Log");
  lxw_format* plain = file.format("0.00");
  worksheet_write_string(sheet, 0, 0, "Name", nullptr);
  worksheet_write_string(sheet, 0, 1, "Scene", nullptr);
  worksheet_write_string(sheet, 0, 3, "Note", nullptr);
  worksheet_write_string(sheet, 1, 0, "C001", nullptr);
  worksheet_write_number(sheet, 1, 1, 12, nullptr);
  worksheet_write_number(sheet, 1, 2, 23.976, plain);
  worksheet_write_string(sheet, 1, 3, "  Café – 東京\nline two  ", nullptr);
  worksheet_write_string(sheet, 3, 0, "C001", nullptr);  // the same shared string again
  worksheet_write_number(sheet, 3, 1, -1e15, nullptr);
  worksheet_write_string(sheet, 3, 3, "a & b <c> \"d\" \x01", nullptr);
  worksheet_write_blank(sheet, 3, 6, plain);  // style only: not in use
  worksheet_write_blank(sheet, 7, 0, plain);

  const Workbook log = file.close_and_open();

  EXPECT_EQ(log.last_row(), 4);
  EXPECT_EQ(log.last_column(), 4);
  EXPECT_EQ(row(log, 1), (std::vector<Cell>{text("Name"), text("Scene"), empty, text("Note")}));
  EXPECT_EQ(row(log, 2), (std::vector<Cell>{text("C001"), number(12), number(23.976),
                                            text("  Café – 東京\nline two  ")}));
  EXPECT_EQ(row(log, 3), (std::vector<Cell>{empty, empty, empty, empty}));
  EXPECT_EQ(row(log, 4),
            (std::vector<Cell>{text("C001"), number(-1e15), empty, text("a & b <c> \"d\" \x01")}));
  EXPECT_EQ(log.cell(4, 7), empty);
}

TEST(XlsxReader, DateAndTimeFormatsGiveIsoTextOtherFormatsNumbers) {
  test_support::TempDir dir;
  XlsxFile file(dir.file("dates.xlsx"));
  lxw_worksheet* sheet = file.sheet();
  lxw_datetime moment = {2024, 3, 1, 12, 30, 15.0};
  lxw_datetime time_only = {0, 0, 0, 12, 30, 0.0};
  worksheet_write_datetime(sheet, 0, 0, &moment, file.format("yyyy-mm-dd"));
  worksheet_write_datetime(sheet, 0, 1, &moment, file.builtin_format(14));
  worksheet_write_datetime(sheet, 0, 2, &moment, file.format("yyyy-mm-dd hh:mm:ss"));
  worksheet_write_datetime(sheet, 0, 3, &moment, file.builtin_format(22));
  worksheet_write_datetime(sheet, 0, 4, &time_only, file.format("hh:mm:ss"));
  worksheet_write_datetime(sheet, 0, 5, &time_only, file.builtin_format(46));  // [h]:mm:ss
  worksheet_write_number(sheet, 1, 0, 45352, file.format("0.00"));
  worksheet_write_number(sheet, 1, 1, 45352, file.format("0 \"days\""));
  worksheet_write_number(sheet, 1, 2, -1, file.format("yyyy-mm-dd"));

  const Workbook sheet_read = file.close_and_open();

  EXPECT_EQ(row(sheet_read, 1),
            (std::vector<Cell>{date(2024, 3, 1), date(2024, 3, 1),
                               date_time(2024, 3, 1, 12, 30, 15), date_time(2024, 3, 1, 12, 30, 15),
                               time_of_day(12, 30, 0), time_of_day(12, 30, 0)}));
  EXPECT_EQ(row(sheet_read, 2),
            (std::vector<Cell>{number(45352), number(45352), number(-1), empty, empty, empty}));
}

TEST(XlsxReader, CellsAtTheFarEdgesOfTheSheetAreRead) {
  test_support::TempDir dir;
  XlsxFile file(dir.file("edges.xlsx"));
  lxw_worksheet* sheet = file.sheet();
  for (int r = 0; r < 40; ++r) {
    for (int c = 0; c < 30; ++c) worksheet_write_number(sheet, r, c, r * 100 + c, nullptr);
  }
  worksheet_write_string(sheet, 1048575, 16383, "XFD1048576", nullptr);

  const Workbook edges = file.close_and_open();

  EXPECT_EQ(edges.last_row(), 1048576);
  EXPECT_EQ(edges.last_column(), 16384);
  EXPECT_EQ(edges.cell(1048576, 16384), text("XFD1048576"));
  EXPECT_EQ(edges.cell(40, 30), number(3929));  // AD40
  EXPECT_EQ(edges.cell(27, 27), number(2626));  // AA27
  EXPECT_EQ(edges.cell(41, 1), empty);
}

TEST(XlsxReader, OnlyTheFirstWorksheetInWorkbookOrderIsReadPastChartSheets) {
  test_support::TempDir dir;
  XlsxFile file(dir.file("order.xlsx"));
  lxw_chartsheet* charts = workbook_add_chartsheet(file.book(), "Chart");
  lxw_worksheet* log = file.sheet("Log");
  lxw_worksheet* other = file.sheet("Other");
  worksheet_write_number(log, 0, 0, 1, nullptr);
  worksheet_write_number(log, 1, 0, 2, nullptr);
  worksheet_write_string(other, 0, 0, "not this one", nullptr);
  lxw_chart* chart = workbook_add_chart(file.book(), LXW_CHART_COLUMN);
  chart_add_series(chart, nullptr, "=Log!$A$1:$A$2");
  chartsheet_set_chart(charts, chart);

  const Workbook first = file.close_and_open();

  EXPECT_EQ(first.last_row(), 2);
  EXPECT_EQ(first.cell(1, 1), number(1));

  // A first worksheet without cells in use is empty, however full the next one is.
  XlsxFile empty_first(dir.file("empty.xlsx"));
  worksheet_write_blank(empty_first.sheet("Empty"), 3, 3, empty_first.format("0.00"));
  worksheet_write_string(empty_first.sheet("Data"), 0, 0, "not first", nullptr);
  const Workbook empty = empty_first.close_and_open();
  EXPECT_EQ(empty.last_row(), 0);
  EXPECT_EQ(empty.last_column(), 0);
}

}  // namespace
}  // namespace pellago
