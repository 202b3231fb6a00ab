#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "document/libxml_errors.hpp"
#include "merge/rules.hpp"
#include "timecode/frame_rate.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// The stages of a merge, in the order it goes through them.
enum class MergePhase { reading_sheet, reading_xml, merging_clips, writing };

// Where a merge stands, as the host is told it.
struct ProgressReport {
  std::int64_t done = 0;   // clips visited so far; 0 outside merging_clips
  std::int64_t total = 0;  // clips in the document; 0 outside merging_clips
  MergePhase phase = MergePhase::reading_sheet;
};

// What the engine gives to and takes from the application that runs it.
struct Host {
  // Receives the raw header row once the workbook is open and row 1 is read, before the XML is.
  std::function<void(const std::vector<Cell>&)> set_column_headers;
  // Told on the calling thread as each phase begins, with done 0 (and total the clips for
  // merging_clips), then as each clip is visited, before its rows are applied, with the clips
  // visited so far, that one included. It runs once per clip: a cheap callback keeps a large
  // merge fast. Unset: no progress.
  std::function<void(const ProgressReport&)> progress;
  // The frame-rate table, asked for whenever a clip's rate is resolved; unset means FRAME_RATES.
  std::function<const FrameRates&()> frame_rates;
  // For a program that exits right after the merge: the document's tree is not freed but left to
  // the operating system, which takes it back at exit faster than freeing it node by node. A host
  // that lives on keeps the default, or keeps every merged tree until it exits.
  bool keep_document_until_exit = false;
  // The rules of the merge.
  Rules rules = classic_rules();
  // The name of the worksheet to read; unset, the rules choose (log_sheet_choice).
  std::optional<std::string> worksheet = std::nullopt;
  // Asked before each clip is visited and once more before the output is written, on the calling
  // thread: true stops the merge there, writes nothing and ends it with Outcome::cancelled.
  std::function<bool()> cancel_requested;
};

enum class Outcome { merged, not_a_log_sheet, cancelled };

// A clip that several sheet rows named, and the subclips cut from it.
struct CutClip {
  std::string name{};                   // the clip's name as the document had it
  std::vector<std::string> subclips{};  // the names of the subclips after the merge, row order
  // The clip stayed whole, with its subclips beside it; otherwise it became the first of them.
  bool kept_whole = false;
  friend bool operator==(const CutClip&, const CutClip&) = default;
};

struct MergeReport {
  Outcome outcome = Outcome::not_a_log_sheet;
  std::size_t clips_visited = 0;
  std::size_t clips_changed = 0;  // clips that at least one row was applied to
  std::size_t subclips_made = 0;  // copies made for further rows
  std::size_t markers_added = 0;
  std::size_t rows_unmatched = 0;  // data rows whose Name matched no clip
  // Row applications that left a value out as impossible (Rules::leave_out_impossible_values).
  std::size_t rows_not_fully_applied = 0;
  // Clip items of sequences logged by rows that named no master clip (Rules::log_clip_items).
  std::size_t clip_items_logged = 0;
  // What the XML parser repaired. When count is not 0 the document was malformed: the clips
  // after the first error's line may be missing from the merge and from the output.
  RecoveredErrors recovered;
  std::vector<CutClip> cut_clips{};  // document order
};

// Merges the log sheet at sheet_path into the XML document at xml_path and writes the result to
// output_path (which may be xml_path; "-" is standard output). A sheet whose extension is not
// exactly ".xls" or ".xlsx" is not a log sheet: nothing is read or written. An output path that
// exists and is not a regular file, or is the sheet itself, is refused before anything is read.
// A malformed XML document is refused under host.rules.refuse_malformed_xml, or merged as far as it
// could be recovered (see MergeReport::recovered). A cancelled merge reports what it did up to then
// and writes nothing. Every failure throws Error and leaves output_path as it was.
MergeReport add_log_notes(const std::string& sheet_path, const std::string& xml_path,
                          const std::string& output_path, const Host& host = {});

}  // namespace pellago
