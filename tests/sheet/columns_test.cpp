#include "sheet/columns.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace pellago {
namespace {

// "logginginfo/good" -> "<logginginfo><good>", as the guide writes elements.
std::string tags(std::string_view chain) {
  std::string text = "<";
  for (char c : chain) text += c == '/' ? std::string("><") : std::string(1, c);
  return text + ">";
}

// The cells of each row of the guide's table whose header row starts with `first`.
std::vector<std::vector<std::string>> guide_rows(std::string_view first = "| Header |") {
  std::ifstream guide(PELLAGO_SOURCE_DIR "/docs/log-sheets.md");
  std::string line;
  while (std::getline(guide, line) && !line.starts_with(first)) {
  }
  std::getline(guide, line);  // |---|
  std::vector<std::vector<std::string>> rows;
  while (std::getline(guide, line) && line.starts_with("| ")) {
    std::vector<std::string> cells;
    std::stringstream cells_text(line.substr(2));
    for (std::string cell; std::getline(cells_text, cell, '|');) {
      cells.push_back(cell.substr(0, cell.find_last_not_of(' ') + 1));
      if (!cells.back().empty() && cells.back().front() == ' ') cells.back().erase(0, 1);
    }
    rows.push_back(cells);
  }
  return rows;
}

TEST(ColumnsTest, TheGuideListsEveryColumnWithTheElementsItWrites) {
  const std::vector<std::vector<std::string>> rows = guide_rows();
  ASSERT_EQ(rows.size(), kSheetColumns.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const SheetColumn& column = kSheetColumns[i];
    ASSERT_EQ(rows[i].size(), 4u);
    EXPECT_EQ(rows[i][0], column.header);
    const std::string& written = rows[i][2];
    if (column.write == ElementWrite::none) continue;
    EXPECT_NE(written.find(tags(column.element)), std::string::npos) << column.header;
    EXPECT_EQ(written.starts_with("every"), column.write == ElementWrite::every_match)
        << column.header;
    if (column.write != ElementWrite::first_match) continue;
    EXPECT_NE(written.find(fmt::format("added {} `{}`",
                                       column.placement == Placement::before ? "before" : "after",
                                       tags(column.anchor))),
              std::string::npos)
        << column.header;
  }
}

TEST(ColumnsTest, TheGuideListsEveryAliasAndTheReaderReadsThem) {
  std::vector<std::vector<std::string>> expected;
  for (const SheetColumn& column : kSheetColumns) {
    std::vector<std::string> names;
    for (std::string_view alias : aliases_of(column)) {
      names.push_back(fmt::format("`{}`", alias));
      EXPECT_EQ(header_read_as(alias), column.header);
    }
    if (!names.empty())
      expected.push_back({std::string(column.header), fmt::format("{}", fmt::join(names, ", "))});
  }
  EXPECT_EQ(guide_rows("| Column | Also read under |"), expected);
  EXPECT_EQ(header_read_as(" good "), "Good");
  EXPECT_EQ(header_read_as("Shot Take"), std::nullopt);
}

}  // namespace
}  // namespace pellago
