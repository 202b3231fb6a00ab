#include "workbook/workbook.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <variant>

#include "error.hpp"
#include "workbook/xls_reader.hpp"
#include "workbook/xlsx_reader.hpp"
#include "workbook/zip_package.hpp"

namespace pellago {

namespace {

const Cell kEmpty;

// The extension as a scripting interpreter's extname gives it: from the last "." of the last path
// component; none when that component has no "." or ends with it.
std::string extension_of(const std::string& path) {
  return std::filesystem::path(path).filename().extension().string();
}

SheetKind kind_of_extension(const std::string& extension) {
  if (extension == ".xls") return SheetKind::xls;
  if (extension == ".xlsx") return SheetKind::xlsx;
  return SheetKind::not_a_log_sheet;
}

}  // namespace

const Workbook::Entry* Workbook::find(int row, int column) const {
  if (row < 1 || column < 1 || row > last_row()) return nullptr;
  const auto& cells = rows_[row - 1];
  const auto found =
      std::lower_bound(cells.begin(), cells.end(), column,
                       [](const Entry& entry, int wanted) { return entry.column < wanted; });
  return found != cells.end() && found->column == column ? &*found : nullptr;
}

const Cell& Workbook::cell(int row, int column) const {
  const Entry* entry = find(row, column);
  return entry ? entry->value : kEmpty;
}

std::string_view Workbook::number_format(int row, int column) const {
  const Entry* entry = find(row, column);
  if (!entry || entry->format >= number_formats_.size()) return {};
  return number_formats_[entry->format];
}

void Workbook::set_number_formats(std::vector<std::string> codes) {
  number_formats_ = std::move(codes);
}

int Workbook::last_row() const { return static_cast<int>(rows_.size()); }

int Workbook::last_column() const { return last_column_; }

void Workbook::set_cell(int row, int column, Cell value, std::uint32_t format) {
  if (row < 1 || column < 1 || std::holds_alternative<std::monostate>(value)) return;
  if (static_cast<std::size_t>(row) > rows_.size()) {
    // Readers go row by row: a new row is likely as wide as the one before it.
    const std::size_t width = rows_.empty() ? 0 : rows_.back().size();
    rows_.resize(row);
    rows_.back().reserve(width);
  }
  auto& cells = rows_[row - 1];
  if (cells.empty() || cells.back().column < column) {
    cells.push_back({column, format, std::move(value)});
  } else {
    const auto found =
        std::lower_bound(cells.begin(), cells.end(), column,
                         [](const Entry& entry, int wanted) { return entry.column < wanted; });
    if (found->column == column) {
      found->value = std::move(value);
      found->format = format;
    } else {
      cells.insert(found, {column, format, std::move(value)});
    }
  }
  last_column_ = std::max(last_column_, column);
}

std::string cell_text_cap_message(std::uint64_t limit) {
  return fmt::format("the worksheet's text passes {}; refusing it as a likely bomb",
                     describe_size(limit));
}

// The extension as a scripting interpreter's extname gives it: from the last "." of the last path
// component; none when that component has no "." or ends with it.
SheetKind sheet_kind(const std::string& path) { return kind_of_extension(extension_of(path)); }

SheetKind sheet_kind_ignoring_case(const std::string& path) {
  std::string extension = extension_of(path);
  std::ranges::transform(extension, extension.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return kind_of_extension(extension);
}

std::string missing_worksheet_message(const std::string& path, const std::string& name,
                                      const std::vector<std::string>& names) {
  return fmt::format("{}: the workbook has no worksheet named \"{}\"; its worksheets are \"{}\"",
                     path, name, fmt::join(names, "\", \""));
}

std::vector<std::string> worksheet_names(const std::string& path, SheetKind kind) {
  if (kind == SheetKind::xls) return xls_worksheet_names(path);
  return xlsx_worksheet_names(path);
}

Workbook open_workbook(const std::string& path, SheetKind kind, const WorksheetChoice& choice) {
  return start_reading_workbook(path, kind, choice).finish();
}

// An .xls read whole, or an .xlsx read up to the end of row kRowsReadFirst.
struct WorkbookReading::Source {
  std::variant<Workbook, XlsxReading> reading;
};

WorkbookReading::WorkbookReading(std::unique_ptr<Source> source) : source_(std::move(source)) {}
WorkbookReading::~WorkbookReading() = default;
WorkbookReading::WorkbookReading(WorkbookReading&&) noexcept = default;
WorkbookReading& WorkbookReading::operator=(WorkbookReading&&) noexcept = default;

const Workbook& WorkbookReading::sheet() const {
  if (const auto* whole = std::get_if<Workbook>(&source_->reading)) return *whole;
  return std::get<XlsxReading>(source_->reading).sheet();
}

Workbook WorkbookReading::finish() {
  if (auto* whole = std::get_if<Workbook>(&source_->reading)) return std::move(*whole);
  return std::get<XlsxReading>(source_->reading).finish();
}

WorkbookReading start_reading_workbook(const std::string& path, SheetKind kind,
                                       const WorksheetChoice& choice) {
  if (kind == SheetKind::not_a_log_sheet) {
    throw Error(fmt::format("{}: not a log sheet: its extension is neither .xls nor .xlsx", path));
  }
  if (kind == SheetKind::xls) {
    return WorkbookReading(
        std::make_unique<WorkbookReading::Source>(WorkbookReading::Source{read_xls(path, choice)}));
  }
  return WorkbookReading(std::make_unique<WorkbookReading::Source>(
      WorkbookReading::Source{XlsxReading(path, {}, choice)}));
}

}  // namespace pellago
