#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sheet/log_sheet.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// A whole log sheet as the merge reads it under the default rules.
struct LogSheet {
  std::string worksheet;      // the name of the worksheet read
  int header_row = 1;         // the rows above it are titles
  std::vector<Cell> headers;  // the header row as it is
  std::vector<LogRow> rows;   // the rows below it to the last, blank rows included
};

// Reads the log sheet at `path` as the default rules read it (the worksheet named, else the
// first with a Name header; its header row below any title rows, columns without a header left
// out); nullopt when the path is not a log sheet (see
// sheet_kind_ignoring_case), in which case nothing is read. Throws Error naming the file when it
// cannot be read.
std::optional<LogSheet> read_log_sheet(const std::string& path,
                                       const std::optional<std::string>& worksheet = {});

}  // namespace pellago
