#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "document/document.hpp"
#include "merge/clip_match.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

// Told by the merge driver what it reads and does, at the named points of the merge. An observer
// never changes what the merge does; a plain merge has none.
struct MergeObserver {
  virtual ~MergeObserver() = default;

  // The sheet is read; the workbook stays open until the merge ends.
  virtual void sheet_read(const Workbook& workbook, const std::vector<Cell>& headers,
                          const std::vector<LogRow>& rows) = 0;
  // The document at xml_path is parsed and nothing is changed yet.
  virtual void document_read(Document& document, const std::string& xml_path) = 0;
  // A clip with a name element is matched (maybe to no row), at its 0-based position.
  virtual void clip_matched(const ClipMatch& match, std::size_t position) = 0;
  // Row position j of the clip is about to be applied to its target clip.
  virtual void row_started(const ClipMatch& match, std::size_t j) = 0;
  // The row passed the position limit; its target clip's timing and duration are read.
  virtual void row_timed(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                         std::int64_t clip_duration) = 0;
  // Every clip is visited; row_used[i] tells whether row i named a clip.
  virtual void merge_finished(const std::vector<bool>& row_used) = 0;
};

}  // namespace pellago
