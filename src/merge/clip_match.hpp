#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "document/document.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/resolve_clip_timing.hpp"
#include "merge/rules.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

// Row positions (0-based, into the sheet's row list) by "Name" text, each list in sheet order.
// Rows of a sheet without a "Name" column are in no list.
using RowsByName = std::unordered_map<std::string, std::vector<std::size_t>>;

RowsByName index_rows_by_name(const std::vector<LogRow>& rows);

// The subclips earlier merges cut, by the id of the clip they were cut from ("A001" for the clip
// of id "A001 clip01"), each list in document order.
using EarlierSubclips = std::unordered_map<std::string, std::vector<Element>>;

// One visited clip and the rows that name it.
struct ClipMatch {
  Element clip;
  std::optional<std::string> id;
  std::string name;
  std::vector<std::size_t> rows;  // positions of the matching rows, sheet order
  bool several = false;           // more than one matching row
  // The clip stands further down the document than the sheet has rows, and the rules keep such a
  // clip's rows from applying beyond its In/Out clearing and copies.
  bool beyond_position_limit = false;
  // A clip item of a sequence, logged because no master clip has the row's Name: it takes the
  // row's logging fields and markers only.
  bool clip_item = false;
  // The clip and the copies made of it for rows that cut subclips: clips[k] is copy number k.
  std::vector<Element> clips;
  // copy_numbers[j]: the copy row position j is applied to (0 for the clip itself). Every row
  // after the first has a copy of its own, or, under Rules::subclips_beside_master_clip, every
  // row that cuts a subclip does.
  std::vector<std::size_t> copy_numbers;
  // reused[k]: clips[k] is a subclip an earlier merge cut, which its row updates.
  std::vector<bool> reused;
  // The clip stays whole, its subclips beside it (Rules::subclips_beside_master_clip).
  bool kept_whole = false;
  // left_out[j]: row position j cuts a subclip that cannot be (its Out before its In, a point that
  // is no timecode or outside the media), and nothing of it is written
  // (Rules::leave_out_impossible_values). Empty when no row is.
  std::vector<bool> left_out = {};

  // The clip row position j is applied to.
  Element target(std::size_t j) const { return clips[copy_numbers[j]]; }
  // Whether row position j turns its target clip into a subclip.
  bool makes_subclip(std::size_t j) const {
    return several && (!kept_whole || copy_numbers[j] != 0);
  }
  // Whether row position j is left out.
  bool leaves_out(std::size_t j) const { return j < left_out.size() && left_out[j]; }
  // Whether row position j updates a subclip an earlier merge cut.
  bool updates_earlier(std::size_t j) const {
    return copy_numbers[j] < reused.size() && reused[copy_numbers[j]];
  }
  // How many copies the rows need.
  std::size_t copy_count() const {
    return copy_numbers.empty() ? 0 : std::ranges::max(copy_numbers);
  }
};

// The clip's id, name text and matching rows, and which copy each row is applied to; none when
// the clip has no name element.
std::optional<ClipMatch> match_clip(Element clip, const RowsByName& index,
                                    const std::vector<LogRow>& rows, const Rules& rules);

struct MergeObserver;

// Whether the element stands inside a sequence.
bool in_sequence(Element element);

// The name of the file a clip item shows, without its extension ("A001_C002" for
// "A001_C002.mov"), looking through a file reference; empty when it has none.
std::string file_stem(Element item, const DescribedFiles* files);

// Everything one merge shares between clip visits.

struct MergeRun {
  const std::vector<LogRow>& rows;
  const RowsByName& index;
  Document& document;
  const Host& host;
  MergeReport& report;
  std::vector<bool> row_used;             // row_used[i]: row i named at least one clip
  MergeObserver* observer = nullptr;      // told what the merge does, for a check; none in a merge
  const DescribedFiles* files = nullptr;  // what file references stand for, when followed
  // The subclips earlier merges cut, when the rules update them.
  const EarlierSubclips* earlier = nullptr;
};

// Matches the clip and applies each matching row to its target clip. Any error while a row is
// applied is rethrown naming the clip and the sheet row, in its message and in its row and clip.
void visit_clip(Element clip, std::size_t position, MergeRun& run);

// Logs the clip items of the document's sequences named by rows that no master clip took (see
// Rules::log_clip_items), in document order.
void visit_clip_items(const Document& document, MergeRun& run);

}  // namespace pellago
