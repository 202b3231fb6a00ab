// Opens each .xlsx given with open_workbook and prints how fast the cells came in and how much
// memory the process reached. Run one file per process: peak RSS only ever grows.
//
//   workbook_bench FILE.xlsx
#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <variant>

#include "error.hpp"
#include "workbook/workbook.hpp"

namespace {

double peak_rss_mib() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

long cells_in_use(const pellago::Workbook& sheet) {
  long count = 0;
  for (int row = 1; row <= sheet.last_row(); ++row) {
    for (int column = 1; column <= sheet.last_column(); ++column) {
      if (!std::holds_alternative<std::monostate>(sheet.cell(row, column))) ++count;
    }
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: workbook_bench FILE.xlsx\n");
    return 2;
  }
  const std::string path = argv[1];
  try {
    const double rss_before = peak_rss_mib();
    // Best of three reads: the machine is shared. Each workbook is gone before the next read, so
    // the peak is that of one.
    double best = 1e300;
    long cells = 0;
    int rows = 0;
    for (int run = 0; run < 3; ++run) {
      const auto start = std::chrono::steady_clock::now();
      const pellago::Workbook sheet = pellago::open_workbook(path, pellago::sheet_kind(path));
      const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
      best = std::min(best, elapsed.count());
      cells = cells_in_use(sheet);
      rows = sheet.last_row();
    }
    fmt::print(
        "{:>8} rows {:>9} cells {:>7.1f} MiB file {:>7.3f} s {:>6.2f} M cells/s   "
        "peak RSS {:>6.1f} MiB ({:.1f} before reading)\n",
        rows, cells, static_cast<double>(std::filesystem::file_size(path)) / (1 << 20), best,
        static_cast<double>(cells) / best / 1e6, peak_rss_mib(), rss_before);
  } catch (const pellago::Error& error) {
    fmt::print(stderr, "workbook_bench: {}\n", error.what());
    return 1;
  }
  return 0;
}
