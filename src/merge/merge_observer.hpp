#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "document/document.hpp"
#include "merge/clip_match.hpp"
#include "merge/row_placement.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// Told by the merge driver what it reads, places and does, at the named points of the merge; an
// observer overrides what it listens to. It never changes what the merge does; a plain merge has
// none.
struct MergeObserver {
  virtual ~MergeObserver() = default;

  // The sheet is read; the workbook stays open until the merge ends.
  virtual void sheet_read([[maybe_unused]] const Workbook& workbook,
                          [[maybe_unused]] const std::vector<Cell>& headers,
                          [[maybe_unused]] const std::vector<LogRow>& rows) {}
  // The document at xml_path is parsed and nothing is changed yet.
  virtual void document_read([[maybe_unused]] Document& document,
                             [[maybe_unused]] const std::string& xml_path) {}
  // A clip with a name element is matched (maybe to no row), at its 0-based position.
  virtual void clip_matched([[maybe_unused]] const ClipMatch& match,
                            [[maybe_unused]] std::size_t position) {}
  // A clip item of a sequence is matched to one row no master clip took.
  virtual void clip_item_matched([[maybe_unused]] const ClipMatch& match) {}
  // Row position j of the clip is about to be applied to its target clip.
  virtual void row_started([[maybe_unused]] const ClipMatch& match,
                           [[maybe_unused]] std::size_t j) {}
  // The row passed the position limit; its target clip's timing and duration are read and the
  // frames its timecodes land on are placed, before any of them is written.
  virtual void row_placed([[maybe_unused]] const ClipMatch& match, [[maybe_unused]] std::size_t j,
                          [[maybe_unused]] const ClipTiming& timing,
                          [[maybe_unused]] std::int64_t clip_duration,
                          [[maybe_unused]] const RowPlacement& placement) {}
  // Every clip is visited; row_used[i] tells whether row i named a clip.
  virtual void merge_finished([[maybe_unused]] const std::vector<bool>& row_used) {}
};

// Several observers, each told everything in turn.
struct MergeObservers final : MergeObserver {
  std::vector<MergeObserver*> observers;

  void sheet_read(const Workbook& workbook, const std::vector<Cell>& headers,
                  const std::vector<LogRow>& rows) override {
    for (MergeObserver* observer : observers) observer->sheet_read(workbook, headers, rows);
  }
  void document_read(Document& document, const std::string& xml_path) override {
    for (MergeObserver* observer : observers) observer->document_read(document, xml_path);
  }
  void clip_matched(const ClipMatch& match, std::size_t position) override {
    for (MergeObserver* observer : observers) observer->clip_matched(match, position);
  }
  void clip_item_matched(const ClipMatch& match) override {
    for (MergeObserver* observer : observers) observer->clip_item_matched(match);
  }
  void row_started(const ClipMatch& match, std::size_t j) override {
    for (MergeObserver* observer : observers) observer->row_started(match, j);
  }
  void row_placed(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                  std::int64_t clip_duration, const RowPlacement& placement) override {
    for (MergeObserver* observer : observers) {
      observer->row_placed(match, j, timing, clip_duration, placement);
    }
  }
  void merge_finished(const std::vector<bool>& row_used) override {
    for (MergeObserver* observer : observers) observer->merge_finished(row_used);
  }
};

}  // namespace pellago
