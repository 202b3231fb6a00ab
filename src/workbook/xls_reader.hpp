#pragma once

#include <string>

#include "workbook/workbook.hpp"

namespace pellago {

// Reads the first worksheet of a binary (BIFF8) workbook: the compound file with libolecf, the
// records with RecordStream. Numbers under a date or time format are DateTimes, booleans truth
// values, error cells the error's text; a formula cell holds its cached result. Throws Error
// naming the file.
Workbook read_xls(const std::string& path);

}  // namespace pellago
