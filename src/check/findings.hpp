#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

// What a check found. The names (kind_name) are stable: tools match on them.
enum class FindingKind {
  unmatched_name,           // a row whose Name matches no clip
  near_header,              // a header the merge does not read, close to one it does
  ignored_marker_header,    // a header with "Marker" in it that is none of the four marker headers
  good_not_yes,             // a Good cell that reads FALSE but looks like a yes
  unknown_marker_color,     // a marker colour outside the colour table (the marker stays red)
  not_a_timecode,           // an In, Out, marker or aux text that is not a timecode
  outside_media,            // an In, Out or marker outside the clip's media
  out_before_in,            // a subclip row whose Out comes before its In
  position_limit,           // a matched clip further down the document than the sheet has rows
  shared_clip_name,         // several clips carry the row's Name; each of them gets the row
  repeated_name,            // a row that repeats an earlier row's Name: it becomes a subclip
  marker_already_present,   // the clip has a marker at the same frame with the same name already
  earlier_subclip,          // a row naming a subclip, or the clip, of an earlier merge
  three_field_timecode,     // a timecode of three fields, read as M:S:F, that looks meant as H:M:S
  time_of_day_cell,         // a time of day (10:00:05) in a timecode column, read as M:S:F
  timecode_without_digits,  // a timecode text without digits ("TBD"), read as 00:00:00:00
  number_in_text_column,    // a number cell where text belongs: 12 is written "12.0"
  in_out_on_single_row,     // In and Out on a clip's only row: they cut nothing
  word_case,                // "df", "true": a display format or rate word compared exactly
  merge_fails,              // the merge would fail with this error
  recovered_xml,            // the XML document is not well-formed: clips may be missing
};

// warning: the sheet probably does not say what its writer meant. note: worth knowing, often
// meant (subclips). error: the merge would fail.
enum class Severity { note, warning, error };

std::string_view kind_name(FindingKind kind);
std::string_view severity_name(Severity severity);

struct Finding {
  FindingKind kind = FindingKind::unmatched_name;
  Severity severity = Severity::warning;
  std::optional<int> row;        // the sheet row as the spreadsheet numbers it (2 = first data row)
  std::optional<Column> column;  // none for findings about a whole row or clip
  std::optional<ClipRef> clip;   // the clip concerned, when there is one
  std::string message;           // one sentence, for people
  std::string suggestion;        // what to change, or empty when there is nothing to suggest
};

enum class ChangeKind {
  text_set,       // an element's text changes from old_text to new_text
  attribute_set,  // an attribute (element ends in "@name") changes from old_text to new_text
  added,          // a new element, with the texts of its leaves in content
  removed,        // an element taken out, with the texts its leaves had in content
  subclip_made,   // a copy of the clip, for a further row; content holds its leaves
};

std::string_view change_kind_name(ChangeKind kind);

// One difference a merge makes to the document.
struct Change {
  ChangeKind kind = ChangeKind::text_set;
  std::optional<int> row;       // the sheet row that causes it; none for document-wide changes
  std::optional<ClipRef> clip;  // the clip the element belongs to (the copy, for a copy's changes)
  // Path from the clip ("logginginfo/scene", "media/video/track/clipitem/@id"), or from the
  // document's root element for an element outside every clip. For subclip_made, "clip".
  std::string element;
  std::optional<std::string> old_text;  // none for added and subclip_made
  std::optional<std::string> new_text;  // none for removed
  // added, removed, subclip_made: (path below the element, text) of every element that holds no
  // element, in document order; the path is empty for the element itself.
  std::vector<std::pair<std::string, std::string>> content;
};

// A data row as the merge read it, with the clips whose name it carries.
struct SheetRow {
  int row = 0;  // as the spreadsheet numbers it (2 = first data row)
  LogRow fields;
  std::vector<ClipRef> clips;  // document order; empty when the row names no clip
};

// The sheet as the merge reads it.
struct SheetAsRead {
  std::vector<Cell> headers;   // row 1 as it is, from column 1 to the last column
  std::vector<SheetRow> rows;  // every row from 2 to the last, blank rows included
};

struct CheckOptions {
  bool changes = false;           // collect the change list too
  bool sheet = false;             // keep the sheet as read, with the clips each row names
  Rules rules = classic_rules();  // the rules of the merge checked
};

struct CheckReport {
  MergeReport merge;              // what the merge would report; outcome not_a_log_sheet stops it
  std::vector<Finding> findings;  // sheet order: header findings, then by row
  std::vector<Change> changes;    // in the order the merge makes them; empty unless asked for
  // When asked for and the sheet could be read (also when the merge would fail after that).
  std::optional<SheetAsRead> sheet;
  std::optional<std::string> error;  // the merge's error message, when it would fail
  int system_error = 0;              // the errno that came with the error, 0 for none
};

}  // namespace pellago
