#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "sheet/log_sheet.hpp"
#include "workbook/workbook.hpp"

namespace pellago::merge_test {

// One sheet row; an empty text stands for an empty cell.
using SheetRow = std::vector<Cell>;

// A worksheet to write: its name ("" for libxlsxwriter's Sheet1...) and rows.
struct NamedSheet {
  std::string name;
  std::vector<SheetRow> rows;
};

// Writes each worksheet's rows, in order, to a new .xlsx file.
inline void write_xlsx_sheets(const std::filesystem::path& path,
                              const std::vector<NamedSheet>& sheets) {
  lxw_workbook* workbook = workbook_new(path.c_str());
  ASSERT_NE(workbook, nullptr);
  for (const NamedSheet& named : sheets) {
    lxw_worksheet* sheet =
        workbook_add_worksheet(workbook, named.name.empty() ? nullptr : named.name.c_str());
    const std::vector<SheetRow>& rows = named.rows;
    for (std::size_t r = 0; r < rows.size(); ++r) {
      for (std::size_t c = 0; c < rows[r].size(); ++c) {
        const auto row = static_cast<lxw_row_t>(r);
        const auto column = static_cast<lxw_col_t>(c);
        if (const auto* text = std::get_if<std::string>(&rows[r][c]); text && !text->empty()) {
          worksheet_write_string(sheet, row, column, text->c_str(), nullptr);
        } else if (const auto* number = std::get_if<double>(&rows[r][c])) {
          worksheet_write_number(sheet, row, column, *number, nullptr);
        }
      }
    }
  }
  ASSERT_EQ(workbook_close(workbook), LXW_NO_ERROR);
}

// Writes the rows, the header row first, to the first worksheet of a new .xlsx file.
inline void write_xlsx(const std::filesystem::path& path, const std::vector<SheetRow>& rows) {
  write_xlsx_sheets(path, {{"", rows}});
}

inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

inline void write_file(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::filesystem::path data_path(const std::string& name) {
  return std::filesystem::path(PELLAGO_TEST_DATA) / name;
}

inline std::string read_data(const std::string& name) { return read_file(data_path(name)); }

inline std::filesystem::path source_path(const std::string& name) {
  return std::filesystem::path(PELLAGO_SOURCE_DIR) / name;
}

// `text` with the first `from` after the first `anchor` replaced by `to`.
inline std::string replace_after(std::string text, const std::string& anchor,
                                 const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from, text.find(anchor));
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

// `text` with every `from` replaced by `to`.
inline std::string replace_all(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// A row as the log sheet reader makes it: ordinary columns in order, markers apart.
inline LogRow make_row(std::initializer_list<std::pair<std::string, std::string>> fields,
                       std::vector<MarkerEntry> markers = {}) {
  auto headers = std::make_shared<std::vector<std::string>>();
  LogRow row;
  for (const auto& [header, value] : fields) {
    headers->push_back(header);
    row.values.push_back(value);
  }
  row.headers = std::move(headers);
  row.markers = std::move(markers);
  return row;
}

// Names of the entries of a folder, sorted.
inline std::vector<std::string> folder_entries(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// A fresh folder per test, removed with everything in it afterwards.
class ScratchFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "pellago-merge-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  std::filesystem::path folder_;
};

}  // namespace pellago::merge_test
