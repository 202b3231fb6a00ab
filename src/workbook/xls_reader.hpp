#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbook/workbook.hpp"

namespace pellago {

// Reads a worksheet of a binary (BIFF8) workbook, the first unless the choice says otherwise: the
// compound file with libolecf, the records with RecordStream. Numbers under a date or time format
// are DateTimes, booleans truth values, error cells the error's text; a formula cell holds its
// cached result. Text cells past cell_text_bytes in all are refused. Throws Error naming the file.
Workbook read_xls(const std::string& path, const WorksheetChoice& choice = {},
                  std::uint64_t cell_text_bytes = kCellTextBytes);

// The names of its worksheets, in tab order.
std::vector<std::string> xls_worksheet_names(const std::string& path);

}  // namespace pellago
