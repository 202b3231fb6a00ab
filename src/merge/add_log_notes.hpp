#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "timecode/frame_rate.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// The host's progress bar. Calls come in this order: set_indeterminate(false),
// set_double_value(0), set_max_value(clips), display_if_needed(); then for every clip visited
// increment_by(1), display_if_needed().
struct Progress {
  std::function<void(bool)> set_indeterminate;
  std::function<void(std::int64_t)> set_double_value;
  std::function<void(std::int64_t)> set_max_value;
  std::function<void(std::int64_t)> increment_by;
  std::function<void()> display_if_needed;
};

// What the engine gives to and takes from the application that runs it.
struct Host {
  // Receives the raw header row once the workbook is open and row 1 is read, before the XML is.
  std::function<void(const std::vector<Cell>&)> set_column_headers;
  // No progress bar: no progress calls at all.
  std::optional<Progress> progress;
  // The frame-rate table, asked for whenever a clip's rate is resolved; unset means FRAME_RATES.
  std::function<const FrameRates&()> frame_rates;
  // For a program that exits right after the merge: the document's tree is not freed but left to
  // the operating system, which takes it back at exit faster than freeing it node by node. A host
  // that lives on keeps the default, or keeps every merged tree until it exits.
  bool keep_document_until_exit = false;
};

enum class Outcome { merged, not_a_log_sheet };

struct MergeReport {
  Outcome outcome = Outcome::not_a_log_sheet;
  std::size_t clips_visited = 0;
  std::size_t clips_changed = 0;  // clips that at least one row was applied to
  std::size_t subclips_made = 0;  // copies made for further rows
  std::size_t markers_added = 0;
  std::size_t rows_unmatched = 0;  // data rows whose Name matched no clip
};

// Merges the log sheet at sheet_path into the XML document at xml_path and writes the result to
// output_path (which may be xml_path). A sheet whose extension is not exactly ".xls" or ".xlsx"
// is not a log sheet: nothing is read or written. Every failure throws Error and leaves
// output_path as it was.
MergeReport add_log_notes(const std::string& sheet_path, const std::string& xml_path,
                          const std::string& output_path, const Host& host = {});

}  // namespace pellago
