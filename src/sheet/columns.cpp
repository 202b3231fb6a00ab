#include "sheet/columns.hpp"

#include <string>

#include "timecode/trimmed.hpp"

namespace pellago {

std::optional<SheetColumn> find_column(std::string_view header) {
  for (const SheetColumn& column : kSheetColumns) {
    if (column.header == header) return column;
  }
  return std::nullopt;
}

std::optional<std::string_view> header_read_as(std::string_view typed) {
  const std::string wanted = lower_ascii(std::string(trimmed(typed)));
  for (const SheetColumn& column : kSheetColumns) {
    if (lower_ascii(std::string(column.header)) == wanted) return column.header;
    for (std::string_view alias : aliases_of(column)) {
      if (lower_ascii(std::string(alias)) == wanted) return column.header;
    }
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
