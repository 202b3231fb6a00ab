#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace pellago {

// A cell of a worksheet: empty, a floating-point number, or text.
using Cell = std::variant<std::monostate, double, std::string>;

// The first worksheet of a workbook, read whole. Rows and columns are 1-based.
class Workbook {
 public:
  // The cell at (row, column); an empty cell outside the used range.
  const Cell& cell(int row, int column) const;
  // Index of the last row and of the last column that hold a value.
  int last_row() const;
  int last_column() const;

  // Readers fill the sheet with this; cells may come in any order.
  void set_cell(int row, int column, Cell value);

 private:
  struct Entry {
    int column;
    Cell value;
  };
  // rows_[r - 1] holds the cells of row r that have a value, by ascending column: memory follows
  // the cells in use, not the sheet's extent.
  std::vector<std::vector<Entry>> rows_;
  int last_column_ = 0;
};

// The text of all the cells of a sheet together may not pass this many bytes: a file of a few
// kilobytes can name one long string in thousands of cells.
inline constexpr std::uint64_t kCellTextBytes = std::uint64_t{256} << 20;

// What a reader says when a sheet's cell text passes `limit`.
std::string cell_text_cap_message(std::uint64_t limit);

enum class SheetKind { xls, xlsx, not_a_log_sheet };

// Decided only by the extension of the last path component, exactly and case-sensitively:
// ".xls", ".xlsx", anything else (".XLS", "log.xls.bak", no extension) is not a log sheet.
SheetKind sheet_kind(const std::string& path);

// Opens the first worksheet of an .xls (FreeXL, in a child process) or .xlsx (libzip and
// libxml2's SAX2 push parser, streaming) file. Text cells are text, numeric cells numbers; date
// and time cells are ISO 8601 text. Throws Error with a one-line message that names the file when
// it cannot be read, is not of the kind its extension says, or is damaged. A first worksheet with
// no cell in use opens, with last_row and last_column 0.
Workbook open_workbook(const std::string& path, SheetKind kind);

}  // namespace pellago
