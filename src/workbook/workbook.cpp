#include "workbook/workbook.hpp"

#include <filesystem>

namespace pellago {

namespace {
const Cell kEmpty;
}

const Cell& Workbook::cell(int row, int column) const {
  if (row < 1 || column < 1 || row > last_row()) return kEmpty;
  const auto& cells = rows_[row - 1];
  return static_cast<std::size_t>(column) <= cells.size() ? cells[column - 1] : kEmpty;
}

int Workbook::last_row() const { return static_cast<int>(rows_.size()); }

int Workbook::last_column() const { return last_column_; }

void Workbook::set_cell(int row, int column, Cell value) {
  if (row < 1 || column < 1 || std::holds_alternative<std::monostate>(value)) return;
  if (static_cast<std::size_t>(row) > rows_.size()) rows_.resize(row);
  auto& cells = rows_[row - 1];
  if (static_cast<std::size_t>(column) > cells.size()) cells.resize(column);
  cells[column - 1] = std::move(value);
  if (column > last_column_) last_column_ = column;
}

SheetKind sheet_kind(const std::string& path) {
  // The extension as a scripting interpreter's extname gives it: from the last "." of the last
  // path component; none when that component has no "." or ends with it.
  const std::string extension = std::filesystem::path(path).filename().extension().string();
  if (extension == ".xls") return SheetKind::xls;
  if (extension == ".xlsx") return SheetKind::xlsx;
  return SheetKind::not_a_log_sheet;
}

}  // namespace pellago
