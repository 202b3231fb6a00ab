#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "workbook/workbook.hpp"

namespace pellago {

// How much an .xlsx may unpack to. Parts are counted while they stream, so a zip bomb stops at
// these sizes whatever the zip directory claims.
struct XlsxLimits {
  std::uint64_t worksheet_part_bytes = std::uint64_t{1} << 30;
  std::uint64_t other_part_bytes = std::uint64_t{256} << 20;  // workbook, relationships, styles...
  std::uint64_t cell_text_bytes = kCellTextBytes;
};

// A worksheet of an Office Open XML workbook (the first unless the choice says otherwise), read
// in two steps: the constructor reads up
// to the end of row kRowsReadFirst, finish reads the rest. finish may run on another thread than
// the constructor, never at the same time as another use. Both throw Error naming the file; a
// sheet damaged past those rows fails in finish.
class XlsxReading {
 public:
  explicit XlsxReading(const std::string& path, const XlsxLimits& limits = {},
                       const WorksheetChoice& choice = {});
  ~XlsxReading();
  XlsxReading(XlsxReading&&) noexcept;
  XlsxReading& operator=(XlsxReading&&) noexcept;

  // The cells read so far: the first kRowsReadFirst rows whole, perhaps some rows after them.
  const Workbook& sheet() const;
  // Reads the rest of the worksheet and hands over the whole sheet, freeing the package, its
  // shared strings and the parser; call it once, and not sheet() after it.
  Workbook finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Reads the first worksheet of an Office Open XML workbook. Throws Error naming the file.
Workbook read_xlsx(const std::string& path, const XlsxLimits& limits = {});

// The names of its worksheets, in tab order.
std::vector<std::string> xlsx_worksheet_names(const std::string& path);

}  // namespace pellago
