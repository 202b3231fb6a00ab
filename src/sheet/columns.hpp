#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "document/selector.hpp"

namespace pellago {

// What the cells of a column are for.
enum class ColumnRole {
  name,             // the clip the row belongs to
  in_point,         // the clip's In point, or where the row's subclip starts
  out_point,        // the clip's Out point, or where the row's subclip ends
  subclip_name,     // the name of the row's subclip
  good,             // yes or y marks the clip good
  logging_text,     // text written into the clip's logging, label or comment elements
  marker_timecode,  // starts a marker group: where the marker goes
  marker_name,
  marker_comment,
  marker_color,
  aux_timecode,  // an auxiliary timecode of the clip's file
};

// How the merge writes a cell into the elements `element` selects.
enum class ElementWrite {
  none,         // the column writes no element of its own
  every_match,  // every match is set; none is added
  first_match,  // the first match is set; a missing one is added next to `anchor`
  required,     // the first match is set; a clip without one cannot take the row
};

enum class Placement { before, after };

// One column of the log sheet. The table below lists every column the merge reads, in the order
// an exported sheet shows them; the sheet reader, the merge's steps, the check, the export, the
// help and the guide for loggers all walk it.
struct SheetColumn {
  std::string_view header;  // exactly as row 1 must hold it
  ColumnRole role;
  std::string_view summary;       // what the column does, one line for the help
  std::string_view element = {};  // the name chain below the clip the cells are written to
  ElementWrite write = ElementWrite::none;
  std::string_view new_element = {};  // first_match: the element added when there is none...
  std::string_view anchor = {};       // ...next to the first match of this name chain
  Placement placement = Placement::before;
  double export_width = 12;  // in characters
  // Other headers loggers and logging tools give the column ("Clip Name", "Circled"), which the
  // default rules read as this one, as they read its header, in any letter case.
  std::string_view aliases = {};  // separated by "|": "Clip Name|Clip|File Name"
};

inline constexpr std::array<SheetColumn, 24> kSheetColumns{{
    {.header = "Name",
     .role = ColumnRole::name,
     .summary = "the clip the row belongs to: every clip whose <name> is this text",
     .element = "name",
     .export_width = 28,
     .aliases = "Clip Name|Clip|File Name"},
    {.header = "In",
     .role = ColumnRole::in_point,
     .summary = "with several rows, where the row's subclip starts (--classic: an empty cell "
                "clears the clip's In point)",
     .element = "in",
     .export_width = 13,
     .aliases = "TC In|In Point|Mark In"},
    {.header = "Out",
     .role = ColumnRole::out_point,
     .summary = "with several rows, where the row's subclip ends (--classic: an empty cell "
                "clears the clip's Out point)",
     .element = "out",
     .export_width = 13,
     .aliases = "TC Out|Out Point|Mark Out"},
    {.header = "Subclip Name",
     .role = ColumnRole::subclip_name,
     .summary = "when several rows name one clip, the name of the row's subclip",
     .export_width = 20,
     .aliases = "Subclip"},
    {.header = "Good",
     .role = ColumnRole::good,
     .summary = "yes, y, true, x, a tick or 1 (any letter case) marks the clip good; no, n, "
                "false or 0 not good; other text leaves it (--classic: yes or y good, other text "
                "not good)",
     .element = "logginginfo/good",
     .write = ElementWrite::every_match,
     .export_width = 7,
     .aliases = "Circled|Circle|Circle Take|Circled Take"},
    {.header = "Label",
     .role = ColumnRole::logging_text,
     .summary = "the clip's label",
     .element = "labels/label",
     .write = ElementWrite::first_match,
     .new_element = "label",
     .anchor = "labels/label2",
     .export_width = 14},
    {.header = "Label 2",
     .role = ColumnRole::logging_text,
     .summary = "the clip's second label",
     .element = "labels/label2",
     .write = ElementWrite::required,
     .export_width = 14},
    {.header = "Description",
     .role = ColumnRole::logging_text,
     .summary = "the clip's description",
     .element = "logginginfo/description",
     .write = ElementWrite::first_match,
     .new_element = "description",
     .anchor = "logginginfo/scene",
     .export_width = 28,
     .aliases = "Desc"},
    {.header = "Scene",
     .role = ColumnRole::logging_text,
     .summary = "the clip's scene",
     .element = "logginginfo/scene",
     .write = ElementWrite::every_match,
     .export_width = 12},
    {.header = "Shot/Take",
     .role = ColumnRole::logging_text,
     .summary = "the clip's shot and take",
     .element = "logginginfo/shottake",
     .write = ElementWrite::every_match,
     .export_width = 12,
     .aliases = "Take|Shot / Take"},
    {.header = "Log Note",
     .role = ColumnRole::logging_text,
     .summary = "the clip's log note",
     .element = "logginginfo/lognote",
     .write = ElementWrite::every_match,
     .export_width = 28,
     .aliases = "Notes|Note|Comments|Log Notes"},
    {.header = "Angle",
     .role = ColumnRole::logging_text,
     .summary = "the clip's camera angle",
     .element = "defaultangle",
     .write = ElementWrite::first_match,
     .new_element = "defaultangle",
     .anchor = "media",
     .placement = Placement::after,
     .export_width = 10,
     .aliases = "Camera|Cam"},
    {.header = "Master Comment 1",
     .role = ColumnRole::logging_text,
     .summary = "the clip's first master comment",
     .element = "comments/mastercomment1",
     .write = ElementWrite::every_match,
     .export_width = 20},
    {.header = "Master Comment 2",
     .role = ColumnRole::logging_text,
     .summary = "the clip's second master comment",
     .element = "comments/mastercomment2",
     .write = ElementWrite::every_match,
     .export_width = 20},
    {.header = "Master Comment 3",
     .role = ColumnRole::logging_text,
     .summary = "the clip's third master comment",
     .element = "comments/mastercomment3",
     .write = ElementWrite::every_match,
     .export_width = 20},
    {.header = "Master Comment 4",
     .role = ColumnRole::logging_text,
     .summary = "the clip's fourth master comment",
     .element = "comments/mastercomment4",
     .write = ElementWrite::every_match,
     .export_width = 20},
    {.header = "Comment 1",
     .role = ColumnRole::logging_text,
     .summary = "the clip's first comment",
     .element = "comments/clipcommenta",
     .write = ElementWrite::first_match,
     .new_element = "clipcommenta",
     .anchor = "comments/mastercomment4",
     .placement = Placement::after,
     .export_width = 20},
    {.header = "Comment 2",
     .role = ColumnRole::logging_text,
     .summary = "the clip's second comment",
     .element = "comments/clipcommentb",
     .write = ElementWrite::first_match,
     .new_element = "clipcommentb",
     .anchor = "comments/mastercomment4",
     .placement = Placement::after,
     .export_width = 20},
    {.header = "Marker Timecode",
     .role = ColumnRole::marker_timecode,
     .summary = "where a marker goes; each group of the four marker columns is one marker, so "
                "repeat the group for more",
     .export_width = 16,
     .aliases = "Marker|Marker TC"},
    {.header = "Marker Name",
     .role = ColumnRole::marker_name,
     .summary = "the marker's name (empty: \"Marker N\")",
     .export_width = 16},
    {.header = "Marker Comment",
     .role = ColumnRole::marker_comment,
     .summary = "the marker's comment",
     .export_width = 20,
     .aliases = "Marker Note"},
    {.header = "Marker Color",
     .role = ColumnRole::marker_color,
     .summary = "the marker's colour (empty or unknown: red)",
     .export_width = 13,
     .aliases = "Marker Colour"},
    {.header = "Aux TC 1",
     .role = ColumnRole::aux_timecode,
     .summary = "the clip's first auxiliary timecode",
     .element = R"(timecode[source="aux1"])",
     .export_width = 13,
     .aliases = "Sound TC|Aux TC"},
    {.header = "Aux TC 2",
     .role = ColumnRole::aux_timecode,
     .summary = "the clip's second auxiliary timecode",
     .element = R"(timecode[source="aux2"])",
     .export_width = 13},
}};

// Whether the role is one of the four of a marker group.
constexpr bool is_marker_role(ColumnRole role) {
  return role == ColumnRole::marker_timecode || role == ColumnRole::marker_name ||
         role == ColumnRole::marker_comment || role == ColumnRole::marker_color;
}

// What the merge relies on in each row of the table, so that a wrong row does not compile: a
// name chain wherever an element is named, an element for every column that writes one and an
// anchor for one that adds it, "Marker" in the headers and aliases of the marker group only (the
// reader ignores other headers holding it), and no header or alias twice.
constexpr bool is_well_formed(const SheetColumn& column) {
  const bool logging = column.role == ColumnRole::good || column.role == ColumnRole::logging_text;
  const bool adds = column.write == ElementWrite::first_match;
  const auto chain = [](std::string_view text) { return text.empty() || parse_selector(text); };
  return chain(column.element) && chain(column.anchor) &&
         logging == (column.write != ElementWrite::none) && (!logging || !column.element.empty()) &&
         adds == !column.new_element.empty() && adds == !column.anchor.empty() &&
         is_marker_role(column.role) == (column.header.find("Marker") != std::string_view::npos) &&
         (column.aliases.empty() ||
          is_marker_role(column.role) == (column.aliases.find("Marker") != std::string_view::npos));
}

// The column's aliases, one by one.
constexpr std::vector<std::string_view> aliases_of(const SheetColumn& column) {
  std::vector<std::string_view> aliases;
  for (std::string_view rest = column.aliases; !rest.empty();) {
    const std::size_t bar = rest.find('|');
    aliases.push_back(rest.substr(0, bar));
    rest = bar == std::string_view::npos ? std::string_view() : rest.substr(bar + 1);
  }
  return aliases;
}

// Every header and alias of the table, letter case aside, names one column only.
constexpr bool has_distinct_headers() {
  const auto lowered = [](std::string_view text) {
    std::array<char, 32> folded{};
    for (std::size_t i = 0; i < text.size() && i < folded.size(); ++i) {
      folded[i] =
          text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
    }
    return folded;
  };
  std::vector<std::array<char, 32>> names;
  for (const SheetColumn& column : kSheetColumns) {
    names.push_back(lowered(column.header));
    for (std::string_view alias : aliases_of(column)) names.push_back(lowered(alias));
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = i + 1; j < names.size(); ++j) {
      if (names[i] == names[j]) return false;
    }
  }
  return true;
}

static_assert(std::ranges::all_of(kSheetColumns, is_well_formed));
static_assert(has_distinct_headers());

// The columns of a role, in table order; constexpr, so that a step can build its own table from
// them at compile time.
template <ColumnRole role>
constexpr auto columns_of() {
  constexpr std::size_t count = [] {
    std::size_t n = 0;
    for (const SheetColumn& column : kSheetColumns) n += column.role == role ? 1 : 0;
    return n;
  }();
  std::array<SheetColumn, count> found{};
  std::size_t i = 0;
  for (const SheetColumn& column : kSheetColumns) {
    if (column.role == role) found[i++] = column;
  }
  return found;
}

// The column of a role that only one column has.
template <ColumnRole role>
constexpr const SheetColumn& column_of() {
  static_assert(columns_of<role>().size() == 1, "more than one column has this role");
  for (const SheetColumn& column : kSheetColumns) {
    if (column.role == role) return column;
  }
  return kSheetColumns.front();
}

// The header of the only column of a role: header_of<ColumnRole::name>() is "Name".
template <ColumnRole role>
constexpr std::string_view header_of() {
  return column_of<role>().header;
}

// The headers of the columns that code reads one by one.
inline constexpr std::string_view kNameHeader = header_of<ColumnRole::name>();
inline constexpr std::string_view kInHeader = header_of<ColumnRole::in_point>();
inline constexpr std::string_view kOutHeader = header_of<ColumnRole::out_point>();
inline constexpr std::string_view kSubclipNameHeader = header_of<ColumnRole::subclip_name>();
inline constexpr std::string_view kGoodHeader = header_of<ColumnRole::good>();

// The column with `header`, exactly; none for a header the merge does not read.
std::optional<SheetColumn> find_column(std::string_view header);

// The header of the column a header as typed names under the default rules: one of the table's
// headers or aliases, in any letter case, blanks around left out ("clip name " reads as "Name");
// none for any other header.
std::optional<std::string_view> header_read_as(std::string_view typed);

// Whether the merge writes the column's cells into the document as they are, as text.
constexpr bool writes_text(ColumnRole role) {
  return role == ColumnRole::subclip_name || role == ColumnRole::logging_text ||
         role == ColumnRole::marker_name || role == ColumnRole::marker_comment;
}

// The headers of the table: the marker group's four, or every other one.
std::vector<std::string_view> marker_headers();
std::vector<std::string_view> row_headers();

}  // namespace pellago
