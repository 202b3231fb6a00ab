#pragma once

#include <cstdint>
#include <string>

#include "workbook/workbook.hpp"

namespace pellago {

// Reads the first worksheet of a binary (BIFF) workbook with FreeXL. Whole numbers and fractions
// are numbers; dates, date-times and times are the text FreeXL gives ("2024-03-01",
// "2024-03-01 12:30:00", "12:30:00"). FreeXL runs in a child process: it reads past the end of
// records longer than BIFF allows, and a crafted file must not take the process down with it.
// Text cells past cell_text_bytes in all are refused. Throws Error naming the file.
Workbook read_xls(const std::string& path, std::uint64_t cell_text_bytes = kCellTextBytes);

}  // namespace pellago
