#include "sheet/log_sheet.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "document/xml_text.hpp"
#include "error.hpp"
#include "sheet/cell_text.hpp"
#include "sheet/columns.hpp"
#include "timecode/trimmed.hpp"

namespace pellago {

namespace {

// What one used column of the sheet feeds; ignored columns have no plan and are never read.
struct ColumnPlan {
  int column = 0;                      // 1-based
  std::string header;                  // its text in row 1
  std::optional<ColumnRole> marker{};  // the column's place in a marker group; none for a field
  std::size_t slot = 0;                // index into the shared headers, for a field column
};

struct SheetPlan {
  std::shared_ptr<const std::vector<std::string>> headers;
  std::vector<ColumnPlan> columns;  // in column order
  bool as_shown = false;
};

// An error about the column (1-based) under `header`, naming it in its fields too.
Error column_error(const std::string& message, std::string header, int column) {
  Error error(message);
  error.column = Column{.header = std::move(header), .letter = column_letters(column)};
  return error;
}

const std::string& header_text(const Cell& header, int column) {
  if (const auto* text = std::get_if<std::string>(&header)) return *text;
  const std::string where = fmt::format("column {} ({})", column_letters(column), column);
  if (std::holds_alternative<std::monostate>(header)) {
    throw column_error(
        fmt::format("{} has no header text: every column in use needs a text header", where), "",
        column);
  }
  throw column_error(
      fmt::format("{} header is the {} {}, not text: every column in use needs a text header",
                  where, cell_kind_name(header), cell_text(header)),
      cell_text(header), column);
}

// The marker group role of a column under a header holding "Marker": such a column is read only
// when its header is exactly one of a marker group's, and ignored otherwise (none).
std::optional<ColumnRole> marker_role(const std::string& header) {
  const std::optional<SheetColumn> column = find_column(header);
  if (!column || !is_marker_role(column->role)) return std::nullopt;
  return column->role;
}

SheetPlan plan_columns(const std::vector<Cell>& header_row, const SheetLayout& layout) {
  auto headers = std::make_shared<std::vector<std::string>>();
  std::unordered_map<std::string, std::size_t> slots;
  std::vector<ColumnPlan> columns;
  for (std::size_t i = 0; i < header_row.size(); ++i) {
    const int column = static_cast<int>(i) + 1;
    if (layout.as_typed && is_untitled(header_row[i])) continue;
    std::string header = header_text(header_row[i], column);
    if (layout.as_typed) {
      if (const std::optional<std::string_view> read_as = header_read_as(header)) header = *read_as;
    }
    ColumnPlan plan{.column = column, .header = header};
    if (header.find("Marker") != std::string::npos) {
      plan.marker = marker_role(header);
      if (!plan.marker) continue;
    } else {
      const auto [slot, added] = slots.try_emplace(header, headers->size());
      if (added) headers->push_back(header);
      plan.slot = slot->second;
    }
    columns.push_back(plan);
  }
  return {std::move(headers), std::move(columns), layout.as_shown};
}

// Every text read from the sheet may end up in the XML document: one that XML 1.0 cannot carry
// ends the read, naming the row, the column and what is wrong.
void require_xml_text(const std::string& text, int row, const ColumnPlan& column) {
  if (const auto problem = text_xml_cannot_carry(text)) {
    Error error =
        column_error(fmt::format("sheet row {}, column {} ({}): the cell holds {}, which XML 1.0 "
                                 "cannot carry",
                                 row, column_letters(column.column), column.column, *problem),
                     column.header, column.column);
    error.row = row;
    throw error;
  }
}

LogRow read_log_row(const Workbook& workbook, int row, const SheetPlan& plan) {
  LogRow log_row{plan.headers, {}, {}, row};
  // Every "Marker Timecode" column starts a new marker, listed only when its timecode is not
  // empty; the group's other columns fill it in. Before the first one they fill a marker that
  // is never listed.
  MarkerEntry unlisted;
  MarkerEntry* marker = &unlisted;
  for (const ColumnPlan& column : plan.columns) {
    std::string text = cell_text_at(workbook, row, column.column, plan.as_shown);
    require_xml_text(text, row, column);
    if (!column.marker) {
      if (!text.empty() && column.slot >= log_row.values.size()) {
        log_row.values.resize(column.slot + 1);
      }
      if (column.slot < log_row.values.size()) log_row.values[column.slot] = std::move(text);
      continue;
    }
    switch (*column.marker) {
      case ColumnRole::marker_timecode:
        if (text.empty()) {
          unlisted = MarkerEntry{};
          marker = &unlisted;
        } else {
          marker = &log_row.markers.emplace_back();
          marker->timecode = std::move(text);
          marker->timecode_column = column.column;
        }
        break;
      case ColumnRole::marker_name:
        marker->name = std::move(text);
        break;
      case ColumnRole::marker_comment:
        marker->comment = std::move(text);
        break;
      default:
        marker->color = lower_ascii(std::move(text));
        marker->color_column = column.column;
        break;
    }
  }
  return log_row;
}

}  // namespace

std::string in_project_header(std::string_view header) {
  return fmt::format("{} (in project)", header);
}

std::string column_letters(int column) {
  std::string letters;
  for (; column > 0; column = (column - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (column - 1) % 26));
  }
  return letters;
}

const std::string* LogRow::field(std::string_view header) const {
  if (!headers) return nullptr;
  for (std::size_t i = 0; i < headers->size(); ++i) {
    if ((*headers)[i] != header) continue;
    return blank_is_absent && value(i).empty() ? nullptr : &value(i);
  }
  return nullptr;
}

void leave_out_blank_cells(std::vector<LogRow>& rows) {
  const auto leave_out_if_empty = [](std::optional<std::string>& text) {
    if (text && text->empty()) text.reset();
  };
  for (LogRow& row : rows) {
    row.blank_is_absent = true;
    for (MarkerEntry& marker : row.markers) {
      leave_out_if_empty(marker.name);
      leave_out_if_empty(marker.comment);
      leave_out_if_empty(marker.color);
    }
  }
}

const std::string& LogRow::value(std::size_t slot) const {
  static const std::string kEmptyText;
  return slot < values.size() ? values[slot] : kEmptyText;
}

std::vector<Cell> read_header_row(const Workbook& workbook, int header_row) {
  std::vector<Cell> headers;
  headers.reserve(workbook.last_column());
  for (int column = 1; column <= workbook.last_column(); ++column) {
    headers.push_back(workbook.cell(header_row, column));
  }
  return headers;
}

bool is_untitled(const Cell& header) {
  const auto* text = std::get_if<std::string>(&header);
  return !text || text->empty();
}

namespace {

std::optional<int> name_header_row(const Workbook& workbook) {
  const int last = std::min(workbook.last_row(), kHeaderRowsSearched);
  for (int row = 1; row <= last; ++row) {
    for (int column = 1; column <= workbook.last_column(); ++column) {
      const auto* text = std::get_if<std::string>(&workbook.cell(row, column));
      if (text && header_read_as(*text) == kNameHeader) return row;
    }
  }
  return std::nullopt;
}

}  // namespace

int find_header_row(const Workbook& workbook) { return name_header_row(workbook).value_or(1); }

WorksheetChoice log_sheet_choice(const std::optional<std::string>& name, bool as_typed) {
  WorksheetChoice choice{.name = name, .accepts = {}};
  if (as_typed) {
    choice.accepts = [](const Workbook& sheet) { return name_header_row(sheet).has_value(); };
  }
  return choice;
}

std::vector<LogRow> read_log_rows(const Workbook& workbook, const std::vector<Cell>& headers,
                                  const SheetLayout& layout) {
  if (workbook.last_row() == 0) throw Error("the first worksheet has no cell in use");
  std::vector<LogRow> rows;
  const int first = layout.header_row + 1;
  if (workbook.last_row() < first) return rows;
  const SheetPlan plan = plan_columns(headers, layout);
  rows.reserve(workbook.last_row() - first + 1);
  for (int row = first; row <= workbook.last_row(); ++row) {
    rows.push_back(read_log_row(workbook, row, plan));
  }
  return rows;
}

}  // namespace pellago
