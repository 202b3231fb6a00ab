#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/workbook.hpp"

namespace pellago {

// A sheet's header row is looked for among its first rows: those above it hold titles.
inline constexpr int kHeaderRowsSearched = kRowsReadFirst;

// Where a sheet's rows stand, and how its headers are read: with as_typed, columns without a text
// header are left out and every header is read as header_read_as reads it (any letter case,
// aliases); otherwise every column in use needs a text header, compared exactly. With as_shown a
// cell reads as the spreadsheet shows it (shown_text), otherwise as cell_text writes it.
struct SheetLayout {
  int header_row = 1;
  bool as_typed = false;
  bool as_shown = false;
};

// One marker of a row. timecode is never empty; the others are absent when their column is.
struct MarkerEntry {
  std::string timecode;
  std::optional<std::string> name;
  std::optional<std::string> comment;
  std::optional<std::string> color;  // lower-cased (ASCII A-Z only)
  int timecode_column = 0;           // the sheet columns they were read from (1-based); 0 for none
  int color_column = 0;
};

// One data row of the log sheet.
struct LogRow {
  // The sheet's ordinary (non-marker) column headers, distinct, shared by every row of the sheet.
  std::shared_ptr<const std::vector<std::string>> headers;
  // values[i] is the cell text under (*headers)[i]; with duplicate headers the right-hand one.
  // Empty texts after the last non-empty one may be left out (a blank row holds none), so that
  // a sheet with far-away rows costs next to nothing per empty row: read them through value().
  std::vector<std::string> values;
  std::vector<MarkerEntry> markers;
  // The row's number, as a spreadsheet shows it.
  int sheet_row = 0;
  // An empty cell reads as absent, as if its column were not there (see leave_out_blank_cells).
  bool blank_is_absent = false;

  // The cell text under `header`, or nullptr when no ordinary column has that header (absent,
  // which differs from the empty text of an empty cell) or, with blank_is_absent, when the cell is
  // empty.
  const std::string* field(std::string_view header) const;
  // The cell text under (*headers)[slot]; the empty text past the end of values.
  const std::string& value(std::size_t slot) const;
};

// Makes every empty cell of the rows read as absent: their fields, and the name, comment and
// colour of their markers.
void leave_out_blank_cells(std::vector<LogRow>& rows);

// The header of a column showing what a clip holds already under `header`, a header the merge
// reads: "Marker Timecode (in project)". The merge reads no such column; the export writes them.
std::string in_project_header(std::string_view header);

// "A" for 1, "Z" for 26, "AA" for 27: a column's name as spreadsheets show it.
std::string column_letters(int column);

// The first of the sheet's first kHeaderRowsSearched rows that has a Name header: the rows above
// it are titles. Row 1 when none has.
int find_header_row(const Workbook& workbook);

// The worksheet a merge reads: the one named; otherwise, with as_typed, the first that has a
// Name header among its first rows (notes kept on the second worksheet, a cover sheet first),
// else the first.
WorksheetChoice log_sheet_choice(const std::optional<std::string>& name, bool as_typed);

// The raw values of the header row, from column 1 to the last column.
std::vector<Cell> read_header_row(const Workbook& workbook, int header_row = 1);

// One LogRow per sheet row from the one below the header row to the last row, blank rows
// included, read as the layout says. A column whose header is empty or not text throws Error
// naming the column (letter and number), unless the layout reads the headers as typed.
// Throws Error naming the row and column of a cell holding what XML 1.0 cannot carry (both also
// in the error's row and column), and when the worksheet has no cell in use at all; the message
// does not name the file, the caller does.
std::vector<LogRow> read_log_rows(const Workbook& workbook, const std::vector<Cell>& headers,
                                  const SheetLayout& layout = {});

// Whether the header names no column the sheet reads: empty, or not text.
bool is_untitled(const Cell& header);

}  // namespace pellago
