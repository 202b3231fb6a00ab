#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "document/libxml_errors.hpp"

namespace pellago {

// What to do when the log sheet to write exists already.
enum class ExistingSheet { refuse, replace };

// A column of the log sheet that was not written, and the first clip that kept it out.
struct ColumnLeftOut {
  std::string header;   // "Label"
  std::string clip;     // the clip's name
  std::string element;  // "<labels><label>", the element the clip lacks
};

// Clips of one name that the merge cannot log, so that no row names them.
struct NameLeftOut {
  std::string name;
  std::string reason;  // "no <duration> element"
};

struct ExportReport {
  std::size_t rows = 0;        // one per distinct clip name written
  std::size_t clips = 0;       // master clips that those rows name
  std::size_t clip_items = 0;  // clip items of sequences that they name
  std::vector<ColumnLeftOut> columns_left_out;
  std::vector<NameLeftOut> names_left_out;
  // What the XML parser repaired. When count is not 0 the document was malformed: the clips
  // after the first error's line may be missing from the sheet.
  RecoveredErrors recovered;
};

// Writes a log sheet (.xlsx) listing the clips of the XML document at xml_path: one row per
// distinct clip name, in document order of first appearance, holding what the first clip of that
// name holds now in the columns the merge reads; markers and auxiliary timecodes that the clip
// holds already go into "(in project)" columns the merge ignores. Then one row per distinct name
// of the sequences' clip items that no master clip has (their own name, or their file's without
// its extension), with In and Out empty: the rows the default rules log those items by. Merging
// the sheet back into the document under the classic rules changes nothing but its update
// behaviours. To keep that so, a column whose cells the merge would write into an element that
// some master clip lacks (it would add the element, or fail) is left out, and so is every clip
// name the merge could not apply a row to. Blank rows at the end
// give the sheet as many rows as the merge needs to reach the last clip named. The sheet is
// written through a temporary file and a rename; with ExistingSheet::refuse an existing
// sheet_path is an error, and a sheet_path that is not a regular file always is. A malformed
// document is exported as far as it could be recovered (ExportReport::recovered). Throws Error on
// every failure, and leaves sheet_path as it was.
ExportReport export_log_sheet(const std::string& xml_path, const std::string& sheet_path,
                              ExistingSheet existing = ExistingSheet::refuse);

}  // namespace pellago
