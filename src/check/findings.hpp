#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

// What a check found, how much it matters, and what a change does to the document; one line each
// in kinds.def, whose names are stable.
enum class FindingKind {
#define PELLAGO_FINDING_KIND(name) name,
#include "check/kinds.def"
};

enum class Severity {
#define PELLAGO_SEVERITY(name) name,
#include "check/kinds.def"
};

enum class ChangeKind {
#define PELLAGO_CHANGE_KIND(name) name,
#include "check/kinds.def"
};

// An enumerator with its stable name.
template <typename Enum>
struct NamedValue {
  Enum value;
  std::string_view name;
};

// Every enumerator with its name, in the order of their values: the lists that kind_name,
// severity_name and change_kind_name read, and that the Python module's enums are made from.
inline constexpr std::array kFindingKinds{
#define PELLAGO_FINDING_KIND(name) NamedValue<FindingKind>{FindingKind::name, #name},
#include "check/kinds.def"
};
inline constexpr std::array kSeverities{
#define PELLAGO_SEVERITY(name) NamedValue<Severity>{Severity::name, #name},
#include "check/kinds.def"
};
inline constexpr std::array kChangeKinds{
#define PELLAGO_CHANGE_KIND(name) NamedValue<ChangeKind>{ChangeKind::name, #name},
#include "check/kinds.def"
};

std::string_view kind_name(FindingKind kind);
std::string_view severity_name(Severity severity);
std::string_view change_kind_name(ChangeKind kind);

struct Finding {
  FindingKind kind = FindingKind::unmatched_name;
  Severity severity = Severity::warning;
  // The sheet row as the spreadsheet numbers it (2 = first data row).
  std::optional<int> row{};
  std::optional<Column> column{};  // none for findings about a whole row or clip
  std::optional<ClipRef> clip{};   // the clip concerned, when there is one
  std::string message{};           // one sentence, for people
  std::string suggestion{};        // what to change, or empty when there is nothing to suggest
};

// One difference a merge makes to the document.
struct Change {
  ChangeKind kind = ChangeKind::text_set;
  std::optional<int> row{};  // the sheet row that causes it; none for document-wide changes
  // The clip the element belongs to (the copy, for a copy's changes).
  std::optional<ClipRef> clip{};
  // Path from the clip ("logginginfo/scene", "media/video/track/clipitem/@id"), or from the
  // document's root element for an element outside every clip. For subclip_made, "clip".
  std::string element{};
  std::optional<std::string> old_text{};  // none for added and subclip_made
  std::optional<std::string> new_text{};  // none for removed
  // added, removed, subclip_made: (path below the element, text) of every element that holds no
  // element, in document order; the path is empty for the element itself.
  std::vector<std::pair<std::string, std::string>> content{};
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
  std::optional<std::string> worksheet = std::nullopt;  // unset: the rules choose the worksheet
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
