#include "sheet/log_sheet_file.hpp"

#include <fmt/format.h>

#include "error.hpp"

namespace pellago {

std::optional<LogSheet> read_log_sheet(const std::string& path,
                                       const std::optional<std::string>& worksheet) {
  const SheetKind kind = sheet_kind_ignoring_case(path);
  if (kind == SheetKind::not_a_log_sheet) return std::nullopt;
  const Workbook workbook = open_workbook(path, kind, log_sheet_choice(worksheet, true));
  const SheetLayout layout{
      .header_row = find_header_row(workbook), .as_typed = true, .as_shown = true};
  LogSheet sheet{.worksheet = workbook.name(),
                 .header_row = layout.header_row,
                 .headers = read_header_row(workbook, layout.header_row),
                 .rows = {}};
  try {
    sheet.rows = read_log_rows(workbook, sheet.headers, layout);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}", path, error.what()), error);
  }
  return sheet;
}

}  // namespace pellago
