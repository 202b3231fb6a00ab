#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbook/number_format.hpp"
#include "workbook/zip_package.hpp"

namespace pellago {

// The number format of each cell format (cellXfs) of the styles part, by its index: the "s"
// attribute of a cell. The part may unpack to cap bytes.
CellFormats read_cell_formats(const ZipPackage& package, const std::string& part_name,
                              std::uint64_t cap);

}  // namespace pellago
