#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/commands.hpp"
#include "error.hpp"
#include "merge/log_sheet.hpp"
#include "workbook/workbook.hpp"

namespace pellago::cli {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFirstDataRow = 2;

Json header_json(const Cell& header) {
  if (const auto* text = std::get_if<std::string>(&header)) return *text;
  if (const auto* number = std::get_if<double>(&header)) return *number;
  return nullptr;
}

Json marker_json(const MarkerEntry& marker) {
  Json json{{"timecode", marker.timecode}};
  if (marker.name) json["name"] = *marker.name;
  if (marker.comment) json["comment"] = *marker.comment;
  if (marker.color) json["color"] = *marker.color;
  return json;
}

Json row_json(const LogRow& row, int row_number) {
  Json fields = Json::object();
  for (std::size_t i = 0; i < row.headers->size(); ++i) fields[(*row.headers)[i]] = row.value(i);
  Json markers = Json::array();
  for (const MarkerEntry& marker : row.markers) markers.push_back(marker_json(marker));
  return {{"row", row_number}, {"fields", std::move(fields)}, {"markers", std::move(markers)}};
}

// `json` as dump(2) writes it at `depth` levels of nesting: every line after the first indented.
std::string dump_at_depth(const Json& json, int depth) {
  const std::string text = json.dump(2, ' ', false, Json::error_handler_t::replace);
  const std::string line_start = "\n" + std::string(2 * static_cast<std::size_t>(depth), ' ');
  std::string indented;
  indented.reserve(text.size());
  for (const char c : text) {
    if (c == '\n') {
      indented += line_start;
    } else {
      indented += c;
    }
  }
  return indented;
}

// The JSON of the whole sheet, written a row at a time: memory stays that of one row's JSON.
void print_log_sheet_json(const std::vector<Cell>& headers, const std::vector<LogRow>& rows) {
  Json header_list = Json::array();
  for (const Cell& header : headers) header_list.push_back(header_json(header));
  std::fputs(
      fmt::format("{{\n  \"headers\": {},\n  \"rows\": [", dump_at_depth(header_list, 1)).c_str(),
      stdout);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Json row = row_json(rows[i], kFirstDataRow + static_cast<int>(i));
    std::fputs(fmt::format("{}\n    {}", i == 0 ? "" : ",", dump_at_depth(row, 2)).c_str(), stdout);
  }
  std::fputs(rows.empty() ? "]\n}\n" : "\n  ]\n}\n", stdout);
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    throw Error(fmt::format("cannot write standard output: {}", std::strerror(errno)), errno);
  }
}

// Log row errors do not name the file; workbook errors already do.
std::vector<LogRow> read_rows_of(const std::string& path, const Workbook& workbook,
                                 const std::vector<Cell>& headers) {
  try {
    return read_log_rows(workbook, headers);
  } catch (const Error& e) {
    throw Error(fmt::format("{}: {}", path, e.what()), e.system_error);
  }
}

int inspect_log_sheet(const std::string& path) {
  const SheetKind kind = sheet_kind(path);
  if (kind == SheetKind::not_a_log_sheet) {
    std::fputs(fmt::format("pellago: {} is not a log sheet: only files ending in .xls or .xlsx "
                           "(lower case) are read\n",
                           path)
                   .c_str(),
               stderr);
    return kExitNotALogSheet;
  }
  // A closed pipe on standard output fails the write instead of killing the process.
  std::signal(SIGPIPE, SIG_IGN);
  const Workbook workbook = open_workbook(path, kind);
  const std::vector<Cell> headers = read_header_row(workbook);
  const std::vector<LogRow> rows = read_rows_of(path, workbook, headers);
  print_log_sheet_json(headers, rows);
  return kExitOk;
}

}  // namespace

void add_inspect_command(CLI::App& app, int& status) {
  CLI::App* inspect = app.add_subcommand(
      "inspect", "Show what a log sheet holds, as the merge reads it, in JSON on standard output.");
  auto path = std::make_shared<std::string>();
  inspect->add_option("SHEET", *path, "The log sheet: an .xls or .xlsx workbook")->required();
  inspect->footer(
      "Reads the first worksheet. \"headers\" lists row 1 as it is (text, number or null); "
      "\"rows\" has one entry per row from 2 to the last, blank rows included: its \"fields\" "
      "map each ordinary column header to the cell text (numbers as 12.0; with duplicate headers "
      "the right-hand column), and its \"markers\" come from the \"Marker Timecode\", \"Marker "
      "Name\", \"Marker Comment\" and \"Marker Color\" columns; a marker is listed only when its "
      "timecode cell is not empty.\n\nExit status: 0 done, 1 the sheet cannot be read, 2 wrong "
      "usage, 3 not an .xls or .xlsx file.");
  inspect->callback([path, &status] { status = inspect_log_sheet(*path); });
}

}  // namespace pellago::cli
