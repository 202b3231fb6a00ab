#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "check/findings.hpp"
#include "document/document.hpp"
#include "merge/clip_match.hpp"
#include "merge/merge_observer.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// Clips in document order under a key (a name, an id).
using ClipsByName = std::unordered_map<std::string, std::vector<const ClipRef*>>;

// Told by the merge driver what it reads, places and does, it writes findings into a CheckReport.
// Each call comes from the driver at the named point of the merge; the collector never changes
// what the merge does.
struct FindingsCollector final : MergeObserver {
  FindingsCollector(CheckReport& report, const CheckOptions& options)
      : report_(report), options_(options) {}

  void sheet_read(const Workbook& workbook, const std::vector<Cell>& headers,
                  const std::vector<LogRow>& rows) override;
  void document_read(Document& document, const std::string& xml_path) override;
  void clip_matched(const ClipMatch& match, std::size_t position) override;
  void clip_item_matched(const ClipMatch& match) override;
  void row_placed(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                  std::int64_t clip_duration, const RowPlacement& placement) override;
  void merge_finished(const std::vector<bool>& row_used) override;
  // Puts the row findings made so far into the report, in sheet order; for a merge that failed.
  void flush_findings();

 private:
  // The header the merge reads a header of the sheet as, under the check's rules.
  std::string read_as(const std::string& typed) const;
  int column_index(std::string_view header) const;  // 0 when no column has the header
  // The sheet row of the row at `position` among the sheet's rows.
  int row_at(std::size_t position) const { return (*rows_)[position].sheet_row; }
  std::optional<Column> column(std::string_view header) const;
  std::optional<Column> column_at(int column) const;
  // A row's findings wait to be put in sheet order; the others go into the report at once.
  void add(Finding finding);
  void check_headers();
  void check_cells(const LogRow& row, int sheet_row, const ClipRef& clip);
  // A timecode cell of a row, and what to call it in a message ("In", "marker timecode").
  struct TimecodeCell {
    int row;
    std::optional<Column> column;
    ClipRef clip;
    std::string_view what;
    std::string_view left_out = {};  // what the merge leaves out for it: "marker", "row"
  };
  void check_number_cells(int at, const ClipRef& clip);
  void check_date_cell(int at, int column, const std::string& header, const ClipRef& clip);
  void check_single_row(const ClipMatch& match, std::size_t j, const ClipTiming& timing);
  void check_untitled_columns();
  void check_words(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                   const RowPlacement& placement);
  void check_timecodes(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                       std::int64_t clip_duration, const RowPlacement& placement);
  // Reports what looks wrong with a timecode text that the merge places at `frame` of the clip;
  // false when it is not a timecode.
  bool check_frame(const std::string& text, std::int64_t frame, const TimecodeCell& cell,
                   const ClipTiming& timing, std::int64_t clip_duration);
  void check_unmatched(const std::vector<bool>& row_used);
  // Reports an unmatched Name that is the id of a clip an earlier merge cut into subclips.
  bool check_earlier_subclips(const std::string& name, int at,
                              const ClipsByName& subclips_by_origin);
  void check_shared_names();

  CheckReport& report_;
  CheckOptions options_;
  const Workbook* workbook_ = nullptr;
  std::vector<Cell> headers_;
  const std::vector<LogRow>* rows_ = nullptr;
  std::vector<ClipRef> clips_;     // every clip with a name element, document order
  std::vector<ClipRef> subclips_;  // those of them whose clip items hold <subclipinfo>
  std::map<std::string, std::vector<ClipRef>> clips_by_name_;
  std::vector<Finding> row_findings_;
  std::vector<bool> item_rows_reported_;  // rows whose In/Out on clip items is reported  // sorted
                                          // into sheet order when the merge ends
};

}  // namespace pellago
