#include <fmt/format.h>

#include <filesystem>
#include <string>

#include "cli/commands.hpp"
#include "workbook/workbook.hpp"

namespace pellago::cli {

std::string not_a_log_sheet_message(const std::string& path) {
  const SheetKind kind = sheet_kind_ignoring_case(path);
  if (kind == SheetKind::not_a_log_sheet) {
    return fmt::format(
        "pellago: {} is not a log sheet: pellago reads Excel workbooks whose name "
        "ends in .xls or .xlsx\n",
        path);
  }
  const std::string renamed =
      std::filesystem::path(path).replace_extension(kind == SheetKind::xls ? ".xls" : ".xlsx");
  return fmt::format(
      "pellago: {} is not read as a log sheet: the extension is compared in lower "
      "case, so only .xls and .xlsx are read; rename it to {}\n",
      path, renamed);
}

}  // namespace pellago::cli
