#pragma once

#include <cstdint>
#include <string>

#include "workbook/workbook.hpp"

namespace pellago {

// How much an .xlsx may unpack to. Parts are counted while they stream, so a zip bomb stops at
// these sizes whatever the zip directory claims.
struct XlsxLimits {
  std::uint64_t worksheet_part_bytes = std::uint64_t{1} << 30;
  std::uint64_t other_part_bytes = std::uint64_t{256} << 20;  // workbook, relationships, styles...
  std::uint64_t cell_text_bytes = kCellTextBytes;
};

// Reads the first worksheet of an Office Open XML workbook. Throws Error naming the file.
Workbook read_xlsx(const std::string& path, const XlsxLimits& limits = {});

}  // namespace pellago
