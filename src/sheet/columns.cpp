#include "sheet/columns.hpp"

namespace pellago {

std::optional<SheetColumn> find_column(std::string_view header) {
  for (const SheetColumn& column : kSheetColumns) {
    if (column.header == header) return column;
  }
  return std::nullopt;
}

std::vector<std::string_view> marker_headers() {
  std::vector<std::string_view> headers;
  for (const SheetColumn& column : kSheetColumns) {
    if (is_marker_role(column.role)) headers.push_back(column.header);
  }
  return headers;
}

std::vector<std::string_view> row_headers() {
  std::vector<std::string_view> headers;
  for (const SheetColumn& column : kSheetColumns) {
    if (!is_marker_role(column.role)) headers.push_back(column.header);
  }
  return headers;
}

}  // namespace pellago
