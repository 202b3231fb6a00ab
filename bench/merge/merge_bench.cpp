// Merges SHEET into PROJECT once and prints the wall and CPU time and the peak memory of the
// process (reading both files and writing OUTPUT included).
//   merge_bench SHEET PROJECT OUTPUT
#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "error.hpp"
#include "merge/add_log_notes.hpp"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: merge_bench SHEET PROJECT OUTPUT\n");
    return 2;
  }
  try {
    const auto start = std::chrono::steady_clock::now();
    const pellago::MergeReport report = pellago::add_log_notes(argv[1], argv[2], argv[3]);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return time.tv_sec + time.tv_usec / 1e6; };
    fmt::print(
        "{} clips ({} changed, {} subclips, {} markers), {:.1f} MB of XML: {:.2f} s "
        "({:.2f} s of CPU), peak memory {} MB\n",
        report.clips_visited, report.clips_changed, report.subclips_made, report.markers_added,
        static_cast<double>(std::filesystem::file_size(argv[2])) / 1e6, took.count(),
        seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss / 1024);
  } catch (const pellago::Error& error) {
    std::fprintf(stderr, "merge_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
