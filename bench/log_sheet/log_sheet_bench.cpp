#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "sheet/cell_text.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {
namespace {

constexpr int kRows = 100000;

// A log sheet shaped like a busy real one: 20 ordinary columns (names, timecodes, notes, scene
// numbers) and three marker groups, every cell filled.
Workbook busy_log_sheet() {
  const std::vector<std::string> ordinary{
      "Name",  "In",        "Out",         "Subclip Name", "Good",      "Label",     "Label 2",
      "Scene", "Shot/Take", "Description", "Log Note",     "Angle",     "Comment 1", "Comment 2",
      "Reel",  "Aux TC 1",  "Aux TC 2",    "Camera",       "Lens (mm)", "Take"};
  const std::vector<std::string> marker_group{"Marker Timecode", "Marker Name", "Marker Comment",
                                              "Marker Color"};
  Workbook workbook;
  int column = 1;
  for (const auto& header : ordinary) workbook.set_cell(1, column++, header);
  for (int group = 0; group < 3; ++group) {
    for (const auto& header : marker_group) workbook.set_cell(1, column++, header);
  }
  for (int row = 2; row <= kRows + 1; ++row) {
    int c = 1;
    workbook.set_cell(row, c++, "A" + std::to_string(row % 997) + "_C" + std::to_string(row));
    for (; c <= 7; ++c) workbook.set_cell(row, c, "01:00:" + std::to_string(10 + c) + ":00");
    for (; c <= 20; ++c) {
      if (c % 2 == 0) {
        workbook.set_cell(row, c, static_cast<double>(row % 50) + c / 4.0);
      } else {
        workbook.set_cell(row, c, "Wide shot, slow push in, take " + std::to_string(c));
      }
    }
    for (int group = 0; group < 3; ++group) {
      workbook.set_cell(row, c++, "01:00:2" + std::to_string(group) + ":00");
      workbook.set_cell(row, c++, "Beat " + std::to_string(group));
      workbook.set_cell(row, c++, "Check focus");
      workbook.set_cell(row, c++, "Red");
    }
  }
  return workbook;
}

void ReadLogRows(benchmark::State& state) {
  const Workbook workbook = busy_log_sheet();
  const std::vector<Cell> headers = read_header_row(workbook);
  for (auto _ : state) benchmark::DoNotOptimize(read_log_rows(workbook, headers));
  state.SetItemsProcessed(state.iterations() * kRows);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_rss_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}
BENCHMARK(ReadLogRows)->Unit(benchmark::kMillisecond);

void FloatText(benchmark::State& state) {
  std::vector<double> numbers;
  for (int i = 0; i < 1000; ++i) numbers.push_back(i * 1.25 + i / 7.0);
  for (auto _ : state) {
    for (double number : numbers) benchmark::DoNotOptimize(float_text(number));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}
BENCHMARK(FloatText);

}  // namespace
}  // namespace pellago

BENCHMARK_MAIN();
