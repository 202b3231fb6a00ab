#include "merge/messages.hpp"

#include <fmt/format.h>

#include <filesystem>
#include <new>

#include "error.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

std::string not_a_log_sheet_message(const std::string& sheet_path) {
  const SheetKind kind = sheet_kind_ignoring_case(sheet_path);
  if (kind == SheetKind::not_a_log_sheet) {
    return fmt::format(
        "{} is not a log sheet: pellago reads Excel workbooks whose name ends in .xls or .xlsx",
        sheet_path);
  }
  const std::string renamed = std::filesystem::path(sheet_path)
                                  .replace_extension(kind == SheetKind::xls ? ".xls" : ".xlsx")
                                  .string();
  return fmt::format(
      "{} is not read as a log sheet: the extension is compared in lower case, so only .xls and "
      ".xlsx are read; rename it to {}",
      sheet_path, renamed);
}

std::string recovered_warning(const RecoveredErrors& errors, const std::string& xml_path) {
  if (errors.count == 0) return {};
  return fmt::format(
      "{} is not well-formed XML: line {}, column {}: {}; merged what could be recovered ({} "
      "error{})",
      xml_path, errors.line, errors.column, errors.message, errors.count,
      errors.count == 1 ? "" : "s");
}

std::string failure_message(const std::exception& failure) {
  if (dynamic_cast<const Error*>(&failure)) return failure.what();
  if (dynamic_cast<const std::bad_alloc*>(&failure)) return "out of memory; nothing was written";
  return fmt::format("{}; nothing was written", failure.what());
}

}  // namespace pellago
