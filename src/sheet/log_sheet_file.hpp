#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sheet/log_sheet.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// A whole log sheet as the merge reads it.
struct LogSheet {
  std::vector<Cell> headers;  // row 1 as it is
  std::vector<LogRow> rows;   // rows 2 to the last, blank rows included
};

// Reads the log sheet at `path`; nullopt when the path is not a log sheet (see sheet_kind), in
// which case nothing is read. Throws Error naming the file when it cannot be read.
std::optional<LogSheet> read_log_sheet(const std::string& path);

}  // namespace pellago
