#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbook/zip_package.hpp"

namespace pellago {

// A worksheet of a workbook: the name its tab shows and its part.
struct XlsxWorksheet {
  std::string name;
  std::string part;
};

// Where the parts of an Office Open XML workbook are, and what its workbook part says.
struct XlsxLayout {
  std::vector<XlsxWorksheet> worksheets;  // in workbook order, at least one
  std::optional<std::string> shared_strings_part;
  std::optional<std::string> styles_part;
  bool date1904 = false;
};

// Finds the workbook part through the package relationships (else "xl/workbook.xml"), reads it
// and its relationships, and resolves its worksheets; chart sheets are passed over. Each part
// read may unpack to cap bytes. Throws Error naming the file when a part is missing or the
// workbook has no worksheet.
XlsxLayout locate_xlsx_parts(const ZipPackage& package, std::uint64_t cap);

}  // namespace pellago
