#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pellago {

// What a cell's number format shows its serial number as.
enum class DateKind { none, date, time, date_time };

// A number shown as a date, a date and time, or a time of day. The fields that its kind does not
// show are 0. Dates run from 1899-12-31 (1900-02-29, the day the 1900 date system invents,
// included) to 9999-12-31.
struct DateTime {
  DateKind kind = DateKind::date;
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  friend bool operator==(const DateTime&, const DateTime&) = default;
};

// Its ISO 8601 text: "2011-05-06", "2024-03-01T12:30:15+00:00" (a date and time is read as UTC:
// workbooks keep no zone), and "12:30:15" for a time of day.
std::string date_time_text(const DateTime& value);

// A cell of a worksheet: empty, a floating-point number, text, a truth value, or a date or time.
using Cell = std::variant<std::monostate, double, std::string, bool, DateTime>;

// A worksheet of a workbook, read whole. Rows and columns are 1-based.
class Workbook {
 public:
  // The name its tab shows.
  const std::string& name() const { return name_; }
  void set_name(std::string name) { name_ = std::move(name); }

  // The cell at (row, column); an empty cell outside the used range.
  const Cell& cell(int row, int column) const;
  // The number format code the cell is shown by ("0.00", "d-mmm"); empty for General, for text
  // and for an empty cell.
  std::string_view number_format(int row, int column) const;
  // Index of the last row and of the last column that hold a value.
  int last_row() const;
  int last_column() const;

  // Readers fill the sheet with this; cells may come in any order. `format` indexes the codes
  // given to set_number_formats.
  static constexpr std::uint32_t kGeneral = 0xFFFFFFFF;
  void set_cell(int row, int column, Cell value, std::uint32_t format = kGeneral);
  // The number format codes of the workbook, by the index its cells give.
  void set_number_formats(std::vector<std::string> codes);

 private:
  struct Entry {
    int column;
    std::uint32_t format;
    Cell value;
  };
  const Entry* find(int row, int column) const;
  // rows_[r - 1] holds the cells of row r that have a value, by ascending column: memory follows
  // the cells in use, not the sheet's extent.
  std::vector<std::vector<Entry>> rows_;
  int last_column_ = 0;
  std::vector<std::string> number_formats_;
  std::string name_;
};

// The text of all the cells of a sheet together may not pass this many bytes: a file of a few
// kilobytes can name one long string in thousands of cells.
inline constexpr std::uint64_t kCellTextBytes = std::uint64_t{256} << 20;

// What a reader says when a sheet's cell text passes `limit`.
std::string cell_text_cap_message(std::uint64_t limit);

// Which worksheet of a workbook to read: the one whose tab shows `name` when it is set, else the
// first whose first kRowsReadFirst rows `accepts` when it is set, else the first. When none
// accepts, the first is read.
struct WorksheetChoice {
  std::optional<std::string> name;
  std::function<bool(const Workbook&)> accepts;
};

// What a reader says when no worksheet has the name asked for.
std::string missing_worksheet_message(const std::string& path, const std::string& name,
                                      const std::vector<std::string>& names);

enum class SheetKind { xls, xlsx, not_a_log_sheet };

// Decided only by the extension of the last path component, exactly and case-sensitively:
// ".xls", ".xlsx", anything else (".XLS", "log.xls.bak", no extension) is not a log sheet.
SheetKind sheet_kind(const std::string& path);

// The kind the path would have with its extension in lower case: tells a sheet that is only
// misnamed ("log.XLSX") from a file of another kind.
SheetKind sheet_kind_ignoring_case(const std::string& path);

// The names of the worksheets of the workbook, in tab order (chart sheets left out). Throws what
// open_workbook throws.
std::vector<std::string> worksheet_names(const std::string& path, SheetKind kind);

// Opens the first worksheet of an .xls (libolecf and a BIFF8 record reader) or .xlsx (libzip and
// libxml2's SAX2 push parser, streaming) file. Text cells are text, numeric cells numbers,
// boolean cells truth values; numbers under a date or time format are DateTimes, and error cells
// the error's text ("#N/A"). Throws Error with a one-line message that names the file when
// it cannot be read, is not of the kind its extension says, or is damaged. A first worksheet with
// no cell in use opens, with last_row and last_column 0.
// A choice reads another worksheet, as WorksheetChoice says.
Workbook open_workbook(const std::string& path, SheetKind kind, const WorksheetChoice& choice = {});

// The rows start_reading_workbook reads before it returns: enough to find a header row below
// a few title rows.
inline constexpr int kRowsReadFirst = 20;

// The first worksheet read in two steps, so that its first rows can be used while the rest is
// read: start_reading_workbook reads up to the end of row kRowsReadFirst (an .xls whole), finish
// reads the rest.
// finish may run on another thread than the first step, but never at the same time as another
// use of the object. Between them, they throw what open_workbook throws; a sheet damaged past
// its first rows may fail in finish.
class WorkbookReading {
 public:
  ~WorkbookReading();
  WorkbookReading(WorkbookReading&&) noexcept;
  WorkbookReading& operator=(WorkbookReading&&) noexcept;

  // The cells read so far: rows 1 to kRowsReadFirst whole, perhaps some rows after them.
  const Workbook& sheet() const;
  // Reads the rest of the worksheet and hands over the whole sheet; call it once.
  Workbook finish();

 private:
  struct Source;
  explicit WorkbookReading(std::unique_ptr<Source> source);
  friend WorkbookReading start_reading_workbook(const std::string& path, SheetKind kind,
                                                const WorksheetChoice& choice);

  std::unique_ptr<Source> source_;
};

WorkbookReading start_reading_workbook(const std::string& path, SheetKind kind,
                                       const WorksheetChoice& choice = {});

}  // namespace pellago
