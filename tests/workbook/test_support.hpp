#pragma once

#include <unistd.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "workbook/workbook.hpp"

namespace pellago {

// gtest shows a DateTime in a failure message as its text.
inline void PrintTo(const DateTime& value, std::ostream* out) { *out << date_time_text(value); }

}  // namespace pellago

namespace pellago::test_support {

inline Cell text(const std::string& value) { return value; }
inline Cell number(double value) { return value; }
inline Cell boolean(bool value) { return value; }
inline Cell date(int year, int month, int day) {
  return DateTime{DateKind::date, year, month, day};
}
inline Cell date_time(int year, int month, int day, int hour, int minute, int second) {
  return DateTime{DateKind::date_time, year, month, day, hour, minute, second};
}
inline Cell time_of_day(int hour, int minute, int second) {
  return DateTime{DateKind::time, 0, 0, 0, hour, minute, second};
}
inline const Cell empty;

// The cells of one row, columns 1 to last_column.
inline std::vector<Cell> row(const Workbook& sheet, int number) {
  std::vector<Cell> cells;
  for (int column = 1; column <= sheet.last_column(); ++column) {
    cells.push_back(sheet.cell(number, column));
  }
  return cells;
}

inline std::string fixture(const std::string& name) {
  return std::string(PELLAGO_TEST_DATA) + "/" + name;
}

// A fresh directory for the files one test writes, removed with everything in it.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "pellago-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace pellago::test_support
