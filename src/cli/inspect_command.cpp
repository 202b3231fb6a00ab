#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.hpp"
#include "error.hpp"
#include "merge/messages.hpp"
#include "sheet/cell_text.hpp"
#include "sheet/log_sheet.hpp"
#include "sheet/log_sheet_file.hpp"
#include "workbook/workbook.hpp"

namespace pellago::cli {

namespace {

using Json = nlohmann::ordered_json;

// A header as JSON: text a string, a number a number, a truth value true or false, empty null; a
// date or time, which JSON has no type for, an object that names its kind:
// {"date": "2011-05-06"}, {"date and time": ...}, {"time": "12:30:15"}.
Json header_json(const Cell& header) {
  if (const auto* text = std::get_if<std::string>(&header)) return *text;
  if (const auto* number = std::get_if<double>(&header)) return *number;
  if (const auto* truth = std::get_if<bool>(&header)) return *truth;
  if (std::holds_alternative<DateTime>(header)) {
    return Json{{std::string(cell_kind_name(header)), cell_text(header)}};
  }
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
    const Json row = row_json(rows[i], rows[i].sheet_row);
    std::fputs(fmt::format("{}\n    {}", i == 0 ? "" : ",", dump_at_depth(row, 2)).c_str(), stdout);
  }
  std::fputs(rows.empty() ? "]\n}\n" : "\n  ]\n}\n", stdout);
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    throw Error(fmt::format("cannot write standard output: {}", std::strerror(errno)), errno);
  }
}

int inspect_log_sheet(const std::string& path, const std::optional<std::string>& worksheet) {
  // A closed pipe on standard output fails the write instead of killing the process.
  std::signal(SIGPIPE, SIG_IGN);
  const std::optional<LogSheet> sheet = read_log_sheet(path, worksheet);
  if (!sheet) {
    std::fputs(fmt::format("pellago: {}\n", not_a_log_sheet_message(path)).c_str(), stderr);
    return kExitNotALogSheet;
  }
  print_log_sheet_json(sheet->headers, sheet->rows);
  return kExitOk;
}

}  // namespace

void add_inspect_command(CLI::App& app, int& status) {
  CLI::App* inspect =
      app.add_subcommand("inspect", "Show a log sheet as the merge reads it, in JSON");
  struct Arguments {
    std::string path;
    std::optional<std::string> worksheet;
  };
  auto arguments = std::make_shared<Arguments>();
  inspect->add_option("SHEET", arguments->path, "The log sheet: an .xls or .xlsx workbook")
      ->required();
  add_worksheet_option(*inspect, arguments->worksheet);
  inspect->footer(
      "Reads the sheet as merge and check read it: the first worksheet with a Name header in its "
      "first 20 rows (or the one --sheet names), its header row the first of them with a Name "
      "header. \"headers\" lists the header row as it is (text, number or null); \"rows\" has "
      "one entry per row below it to the last, blank rows included: its \"fields\" map each "
      "column header the merge reads to the cell text as the spreadsheet shows it (with "
      "duplicate headers the right-hand column), and its \"markers\" come from the \"Marker "
      "Timecode\", \"Marker Name\", \"Marker Comment\" and \"Marker Color\" columns; a marker "
      "is listed only when its timecode cell is not empty.\n\nExit status: 0 done, 1 the sheet "
      "cannot be read, 2 wrong usage, 3 not an .xls or .xlsx file.");
  inspect->callback(
      [arguments, &status] { status = inspect_log_sheet(arguments->path, arguments->worksheet); });
}

}  // namespace pellago::cli
