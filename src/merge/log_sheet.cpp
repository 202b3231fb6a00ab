#include "merge/log_sheet.hpp"

#include <fmt/format.h>

#include <array>
#include <unordered_map>
#include <utility>

#include "document/xml_text.hpp"
#include "error.hpp"
#include "merge/cell_text.hpp"

namespace pellago {

namespace {

constexpr int kFirstDataRow = 2;

enum class ColumnRole { field, marker_timecode, marker_name, marker_comment, marker_color };

struct MarkerHeader {
  std::string_view text;
  ColumnRole role;
};

// The marker headers, matched exactly. Any other header containing "Marker" is ignored.
constexpr std::array<MarkerHeader, 4> kMarkerHeaders{{
    {"Marker Timecode", ColumnRole::marker_timecode},
    {"Marker Name", ColumnRole::marker_name},
    {"Marker Comment", ColumnRole::marker_comment},
    {"Marker Color", ColumnRole::marker_color},
}};

// What one used column of the sheet feeds; ignored columns have no plan and are never read.
struct ColumnPlan {
  int column = 0;  // 1-based
  ColumnRole role = ColumnRole::field;
  std::size_t slot = 0;  // index into the shared headers, for a field column
};

struct SheetPlan {
  std::shared_ptr<const std::vector<std::string>> headers;
  std::vector<ColumnPlan> columns;  // in column order
};

const std::string& header_text(const Cell& header, int column) {
  if (const auto* text = std::get_if<std::string>(&header)) return *text;
  const std::string where = fmt::format("column {} ({})", column_letters(column), column);
  if (std::holds_alternative<std::monostate>(header)) {
    throw Error(
        fmt::format("{} has no header text: every column in use needs a text header", where));
  }
  throw Error(
      fmt::format("{} header is the {} {}, not text: every column in use needs a text header",
                  where, cell_kind_name(header), cell_text(header)));
}

// The role of a column under `header`, or none for a marker-like header that is ignored.
std::optional<ColumnRole> column_role(const std::string& header) {
  if (header.find("Marker") == std::string::npos) return ColumnRole::field;
  for (const MarkerHeader& marker : kMarkerHeaders) {
    if (header == marker.text) return marker.role;
  }
  return std::nullopt;
}

SheetPlan plan_columns(const std::vector<Cell>& header_row) {
  auto headers = std::make_shared<std::vector<std::string>>();
  std::unordered_map<std::string, std::size_t> slots;
  std::vector<ColumnPlan> columns;
  for (std::size_t i = 0; i < header_row.size(); ++i) {
    const int column = static_cast<int>(i) + 1;
    const std::string& header = header_text(header_row[i], column);
    const std::optional<ColumnRole> role = column_role(header);
    if (!role) continue;
    ColumnPlan plan{column, *role};
    if (*role == ColumnRole::field) {
      const auto [slot, added] = slots.try_emplace(header, headers->size());
      if (added) headers->push_back(header);
      plan.slot = slot->second;
    }
    columns.push_back(plan);
  }
  return {std::move(headers), std::move(columns)};
}

// Every text read from the sheet may end up in the XML document: one that XML 1.0 cannot carry
// ends the read, naming the row, the column and what is wrong.
void require_xml_text(const std::string& text, int row, int column) {
  if (const auto problem = text_xml_cannot_carry(text)) {
    throw Error(
        fmt::format("sheet row {}, column {} ({}): the cell holds {}, which XML 1.0 "
                    "cannot carry",
                    row, column_letters(column), column, *problem));
  }
}

std::string lower_ascii(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

LogRow read_log_row(const Workbook& workbook, int row, const SheetPlan& plan) {
  LogRow log_row{plan.headers, {}, {}};
  // Every "Marker Timecode" column starts a new marker, listed only when its timecode is not
  // empty; the group's other columns fill it in. Before the first one they fill a marker that
  // is never listed.
  MarkerEntry unlisted;
  MarkerEntry* marker = &unlisted;
  for (const ColumnPlan& column : plan.columns) {
    std::string text = cell_text(workbook.cell(row, column.column));
    require_xml_text(text, row, column.column);
    switch (column.role) {
      case ColumnRole::field:
        if (!text.empty() && column.slot >= log_row.values.size()) {
          log_row.values.resize(column.slot + 1);
        }
        if (column.slot < log_row.values.size()) log_row.values[column.slot] = std::move(text);
        break;
      case ColumnRole::marker_timecode:
        if (text.empty()) {
          unlisted = MarkerEntry{};
          marker = &unlisted;
        } else {
          marker = &log_row.markers.emplace_back();
          marker->timecode = std::move(text);
        }
        break;
      case ColumnRole::marker_name:
        marker->name = std::move(text);
        break;
      case ColumnRole::marker_comment:
        marker->comment = std::move(text);
        break;
      case ColumnRole::marker_color:
        marker->color = lower_ascii(std::move(text));
        break;
    }
  }
  return log_row;
}

}  // namespace

std::vector<std::string_view> marker_headers() {
  std::vector<std::string_view> headers;
  for (const MarkerHeader& marker : kMarkerHeaders) headers.push_back(marker.text);
  return headers;
}

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
    if ((*headers)[i] == header) return &value(i);
  }
  return nullptr;
}

const std::string& LogRow::value(std::size_t slot) const {
  static const std::string kEmptyText;
  return slot < values.size() ? values[slot] : kEmptyText;
}

std::vector<Cell> read_header_row(const Workbook& workbook) {
  std::vector<Cell> headers;
  headers.reserve(workbook.last_column());
  for (int column = 1; column <= workbook.last_column(); ++column) {
    headers.push_back(workbook.cell(1, column));
  }
  return headers;
}

std::vector<LogRow> read_log_rows(const Workbook& workbook, const std::vector<Cell>& headers) {
  if (workbook.last_row() == 0) throw Error("the first worksheet has no cell in use");
  std::vector<LogRow> rows;
  if (workbook.last_row() < kFirstDataRow) return rows;
  const SheetPlan plan = plan_columns(headers);
  rows.reserve(workbook.last_row() - kFirstDataRow + 1);
  for (int row = kFirstDataRow; row <= workbook.last_row(); ++row) {
    rows.push_back(read_log_row(workbook, row, plan));
  }
  return rows;
}

}  // namespace pellago
