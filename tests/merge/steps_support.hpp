#pragma once

#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "merge/log_sheet.hpp"

namespace pellago::steps_test {

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

// `text` with every `from` replaced by `to`.
inline std::string replace_all(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

inline std::string read_data(const std::string& name) {
  std::ifstream file(std::string(PELLAGO_TEST_DATA) + "/" + name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace pellago::steps_test
