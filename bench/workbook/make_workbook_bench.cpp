// Writes a log-sheet-shaped .xlsx for the workbook benchmark: a header row and ROWS data rows of
// 20 columns, text through the shared string table and numbers, as a log sheet holds them.
//
//   make_workbook_bench OUTPUT.xlsx ROWS
#include <fmt/format.h>
#include <xlsxwriter.h>

#include <array>
#include <cstdlib>
#include <string>

namespace {

constexpr std::array<const char*, 20> kHeaders = {"Name",
                                                  "In",
                                                  "Out",
                                                  "Good",
                                                  "Label",
                                                  "Label 2",
                                                  "Scene",
                                                  "Shot/Take",
                                                  "Description",
                                                  "Log Note",
                                                  "Angle",
                                                  "Comment 1",
                                                  "Comment 2",
                                                  "Marker Timecode",
                                                  "Marker Name",
                                                  "Marker Color",
                                                  "Marker Comment",
                                                  "Aux TC 1",
                                                  "Aux TC 2",
                                                  "Take"};

constexpr std::array<const char*, 6> kLabels = {"Good Take", "Best Take", "Alternate Shots",
                                                "Interview", "B-Roll",    "Lifestyle"};
constexpr std::array<const char*, 4> kColors = {"Red", "Green", "Blue", "Yellow"};

std::string timecode(long frames) {
  return fmt::format("{:02}:{:02}:{:02}:{:02}", 1 + frames / 86400, frames / 1440 % 60,
                     frames / 24 % 60, frames % 24);
}

void write_row(lxw_worksheet* sheet, lxw_row_t row, long n) {
  int column = 0;
  auto text = [&](const std::string& value) {
    worksheet_write_string(sheet, row, column++, value.c_str(), nullptr);
  };
  auto number = [&](double value) { worksheet_write_number(sheet, row, column++, value, nullptr); };
  text(fmt::format("A{:03}_C{:03}", n / 500 + 1, n % 500 + 1));
  text(timecode(n * 240 + 12));
  text(timecode(n * 240 + 200));
  text(n % 3 == 0 ? "yes" : "no");
  text(kLabels[n % kLabels.size()]);
  text(kLabels[(n / 7) % kLabels.size()]);
  number(static_cast<double>(n / 20 + 1));
  text(fmt::format("{}/{}", n / 20 + 1, n % 20 + 1));
  text(fmt::format("Wide shot of the harbour, take {}", n % 9 + 1));
  text(n % 4 == 0 ? "focus soft at the end" : "");
  number(static_cast<double>(n % 4 + 1));
  text(fmt::format("cam {}", static_cast<char>('A' + n % 3)));
  text("");
  text(timecode(n * 240 + 100));
  text(fmt::format("beat {}", n % 12));
  text(kColors[n % kColors.size()]);
  text(n % 5 == 0 ? "check sound" : "");
  text(timecode(n * 240 + 3600));
  text(timecode(n * 240 + 7200));
  number(static_cast<double>(n % 20) + 0.5);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fmt::print(stderr, "usage: make_workbook_bench OUTPUT.xlsx ROWS\n");
    return 2;
  }
  const long rows = std::strtol(argv[2], nullptr, 10);
  lxw_workbook* book = workbook_new(argv[1]);
  lxw_worksheet* sheet = workbook_add_worksheet(book, "Log");
  for (lxw_col_t column = 0; column < kHeaders.size(); ++column) {
    worksheet_write_string(sheet, 0, column, kHeaders[column], nullptr);
  }
  for (long n = 0; n < rows; ++n) write_row(sheet, static_cast<lxw_row_t>(n + 1), n);
  if (workbook_close(book) != LXW_NO_ERROR) {
    fmt::print(stderr, "make_workbook_bench: cannot write {}\n", argv[1]);
    return 1;
  }
  return 0;
}
