#include "sheet/log_sheet_file.hpp"

#include <fmt/format.h>

#include "error.hpp"

namespace pellago {

std::optional<LogSheet> read_log_sheet(const std::string& path) {
  const SheetKind kind = sheet_kind(path);
  if (kind == SheetKind::not_a_log_sheet) return std::nullopt;
  const Workbook workbook = open_workbook(path, kind);
  LogSheet sheet{.headers = read_header_row(workbook), .rows = {}};
  try {
    sheet.rows = read_log_rows(workbook, sheet.headers);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}", path, error.what()), error);
  }
  return sheet;
}

}  // namespace pellago
