#include "check/findings_collector.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "check/near_names.hpp"
#include "merge/logging_fields.hpp"
#include "merge/markers.hpp"
#include "merge/merge_document.hpp"
#include "merge/subclips.hpp"
#include "sheet/cell_text.hpp"
#include "sheet/columns.hpp"
#include "timecode/frame_rate.hpp"
#include "timecode/read_integer.hpp"
#include "timecode/to_frames.hpp"
#include "timecode/trimmed.hpp"

namespace pellago {

namespace {

// What the merge does with row position j of a clip that several rows name.
std::string repeated_name_message(const ClipMatch& match, std::size_t j,
                                  const std::vector<LogRow>& rows) {
  const int row = rows[match.rows[j]].sheet_row;
  const int first = rows[match.rows[0]].sheet_row;
  const std::size_t copy = match.copy_numbers[j];
  if (match.leaves_out(j)) {
    return fmt::format(
        "row {} repeats the Name of row {} to cut a subclip that its In and Out cannot cut, so "
        "the merge leaves the row out",
        row, first);
  }
  if (copy == 0) {
    return fmt::format(
        "row {} repeats the Name of row {} without both In and Out, so it logs the clip itself "
        "too: where both rows fill a column, the later row's value stands",
        row, first);
  }
  // Subclips beside the clip are in place before the rows are looked at; the classic copies not.
  const std::string id = copy < match.clips.size() ? match.clips[copy].attribute("id").value_or("")
                                                   : copy_id(match, copy);
  if (match.updates_earlier(j)) {
    return fmt::format(
        "row {} cuts the subclip \"{}\" (id \"{}\") that an earlier merge cut from the clip: it "
        "updates that subclip",
        row, match.clips[copy].first("name").text(), id);
  }
  return fmt::format(
      "row {} repeats the Name of row {}: the merge makes it a subclip, cut from a copy of the "
      "clip (id \"{}\")",
      row, first, id);
}

// The aux timecode columns whose cell in the row holds text, with that text.
std::vector<std::pair<std::string_view, std::string>> filled_aux_cells(const LogRow& row) {
  std::vector<std::pair<std::string_view, std::string>> cells;
  for (const SheetColumn& aux : columns_of<ColumnRole::aux_timecode>()) {
    const std::string* value = row.field(aux.header);
    if (value && !value->empty()) cells.emplace_back(aux.header, *value);
  }
  return cells;
}

// Names compared in the search for the closest clip names to the rows that match none, over the
// whole sheet: a few seconds at most, however many rows and clips.
constexpr std::size_t kNameComparisons = 100'000'000;

std::vector<std::string> to_strings(const std::vector<std::string_view>& views) {
  return {views.begin(), views.end()};
}

std::string quoted_list(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
    text += fmt::format("\"{}\"", names[i]);
  }
  return text;
}

// A Good cell that a person means as yes but that the merge reads as FALSE.
// A word a logger may mean as a yes, whatever the merge makes of it.
bool looks_like_yes(const std::string& cell) {
  static const std::vector<std::string> kYes{"yes", "y", "true", "x", "1", "1.0", "ok", "good"};
  return std::find(kYes.begin(), kYes.end(), lower_ascii(std::string(trimmed(cell)))) != kYes.end();
}

bool digit_at(std::string_view text, std::size_t i) {
  return i < text.size() && text[i] >= '0' && text[i] <= '9';
}

// The time of day of a text in the form the workbook gives a spreadsheet's time cells
// ("10:00:05", or "2024-06-11T10:00:05" with a date), which is also how a person types one; none
// for other texts.
std::optional<std::string> time_of_day(std::string_view text) {
  if (text.size() == 19 && digit_at(text, 0) && text[4] == '-' && text[7] == '-' &&
      (text[10] == 'T' || text[10] == ' ')) {
    text.remove_prefix(11);
  }
  if (text.size() != 8 || text[2] != ':' || text[5] != ':') return std::nullopt;
  for (std::size_t i : {0, 1, 3, 4, 6, 7}) {
    if (!digit_at(text, i)) return std::nullopt;
  }
  return std::string(text);
}

// The headers whose cells the merge writes into the document as text.
bool is_text_header(std::string_view header) {
  const std::optional<SheetColumn> column = find_column(header);
  return column && writes_text(column->role);
}

// The cell's number as a person typed it ("12" for the cell text "12.0"), when the cell is a
// whole number that the merge writes with ".0".
std::optional<std::string> whole_number_typed(const Cell& cell) {
  if (!std::holds_alternative<double>(cell)) return std::nullopt;
  const std::string text = cell_text(cell);
  if (!text.ends_with(".0")) return std::nullopt;
  return text.substr(0, text.size() - 2);
}

// The subclips by the id of the clip they were copied from.
ClipsByName subclips_by_copied_id(const std::vector<ClipRef>& subclips) {
  ClipsByName by_origin;
  for (const ClipRef& subclip : subclips) {
    if (subclip.id) by_origin[id_copied_from(*subclip.id)].push_back(&subclip);
  }
  return by_origin;
}

// The clips by what their names come to once near misses are set aside (near_miss_key).
ClipsByName clips_by_near_miss_key(const std::vector<ClipRef>& clips) {
  ClipsByName by_key;
  for (const ClipRef& clip : clips) by_key[near_miss_key(clip.name)].push_back(&clip);
  return by_key;
}

NameIndex clip_name_index(const std::vector<ClipRef>& clips) {
  std::vector<std::string> names;
  names.reserve(clips.size());
  for (const ClipRef& clip : clips) names.push_back(clip.name);
  return index_names(names);
}

// "did you mean "A001" or "A002"?" while the search for the closest names stays within the
// comparisons left; past them, a sheet that names little of the document is the likelier mistake.
std::string closest_names_suggestion(const std::string& name, const NameIndex& names,
                                     std::size_t& comparisons_left) {
  const std::size_t cost = comparisons(name, names);
  if (cost > comparisons_left) {
    return "so many rows name no clip that no closer names are looked for: check that the sheet "
           "is the log sheet of this XML document";
  }
  comparisons_left -= cost;
  const std::vector<std::string> near = closest(name, names, 3);
  return near.empty() ? std::string() : fmt::format("did you mean {}?", quoted_list(near));
}

// Whether the timecode names the frame the clip's point element holds, at the clip's timing; a
// rate outside the table counts at its timebase.
bool is_clip_point(const std::string& timecode, Element point, const ClipTiming& timing) {
  if (!point) return false;
  const double rate = timing.rate ? timing.rate->fcp_rate : static_cast<double>(timing.timebase);
  return to_frames(timecode, rate, timing.display_format) - timing.start_frame ==
         read_integer(point.text());
}

}  // namespace

std::optional<Column> FindingsCollector::column_at(int column) const {
  if (column < 1 || column > static_cast<int>(headers_.size())) return std::nullopt;
  const auto* text = std::get_if<std::string>(&headers_[column - 1]);
  return Column{text ? *text : std::string(), column_letters(column)};
}

// The column the merge reads a header from: the right-hand one when two carry it.
std::string FindingsCollector::read_as(const std::string& typed) const {
  if (!options_.rules.sheet_as_typed) return typed;
  return std::string(header_read_as(typed).value_or(typed));
}

int FindingsCollector::column_index(std::string_view header) const {
  for (int column = static_cast<int>(headers_.size()); column >= 1; --column) {
    const auto* text = std::get_if<std::string>(&headers_[column - 1]);
    if (text && read_as(*text) == header) return column;
  }
  return 0;
}

std::optional<Column> FindingsCollector::column(std::string_view header) const {
  return column_at(column_index(header));
}

void FindingsCollector::add(Finding finding) {
  if (finding.row) {
    row_findings_.push_back(std::move(finding));
  } else {
    report_.findings.push_back(std::move(finding));
  }
}

void FindingsCollector::sheet_read(const Workbook& workbook, const std::vector<Cell>& headers,
                                   const std::vector<LogRow>& rows) {
  workbook_ = &workbook;
  headers_ = headers;
  rows_ = &rows;
  if (options_.sheet) {
    SheetAsRead& sheet = report_.sheet.emplace();
    sheet.headers = headers;
    sheet.rows.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
      sheet.rows.push_back({rows[i].sheet_row, rows[i], {}});
  }
  check_headers();
  check_untitled_columns();
}

// Cells the merge leaves out for want of a header above them: a note beside the table.
void FindingsCollector::check_untitled_columns() {
  for (int column = 1; column <= static_cast<int>(headers_.size()); ++column) {
    if (!is_untitled(headers_[column - 1])) continue;
    int cells = 0;
    const LogRow* first = nullptr;
    for (const LogRow& row : *rows_) {
      if (std::holds_alternative<std::monostate>(workbook_->cell(row.sheet_row, column))) continue;
      if (!first) first = &row;
      ++cells;
    }
    if (!first) continue;
    const std::string letters = column_letters(column);
    const std::string text =
        cell_text_at(*workbook_, first->sheet_row, column, options_.rules.cells_as_shown);
    add({.kind = FindingKind::cell_without_header,
         .severity = Severity::warning,
         .row = first->sheet_row,
         .column = Column{.header = "", .letter = letters},
         .message = cells == 1 ? fmt::format("column {} has no header, so the merge does not read "
                                             "its cell {}{} (\"{}\")",
                                             letters, letters, first->sheet_row, text)
                               : fmt::format("column {} has no header, so the merge reads none of "
                                             "its {} cells (the first at {}{}: \"{}\")",
                                             letters, cells, letters, first->sheet_row, text),
         .suggestion =
             "give the column a header the merge reads, or move the notes off the sheet"});
  }
}

void FindingsCollector::check_headers() {
  const std::vector<std::string> read = to_strings(row_headers());
  const std::vector<std::string> markers = to_strings(marker_headers());
  // What the merge reads, and the columns an export shows what clips hold in: they are meant.
  std::vector<std::string> meant = read;
  meant.insert(meant.end(), markers.begin(), markers.end());
  for (std::size_t i = 0, known = meant.size(); i < known; ++i) {
    meant.push_back(in_project_header(meant[i]));
  }
  for (int column = 1; column <= static_cast<int>(headers_.size()); ++column) {
    const auto* header = std::get_if<std::string>(&headers_[column - 1]);
    if (!header) continue;
    if (const std::string read = read_as(*header); read != *header) {
      add({.kind = FindingKind::header_alias,
           .severity = Severity::note,
           .column = column_at(column),
           .message = fmt::format("the column \"{}\" is read as \"{}\"", *header, read)});
      continue;
    }
    if (std::find(meant.begin(), meant.end(), *header) != meant.end()) continue;
    if (header->find("Marker") != std::string::npos) {
      std::vector<std::string> near = closest(*header, markers, 1);
      for (const std::string& marker : markers) {
        if (near.empty() && squashed(*header) == squashed(marker)) near.push_back(marker);
      }
      add({.kind = FindingKind::ignored_marker_header,
           .severity = Severity::warning,
           .column = column_at(column),
           .message = fmt::format(
               "the merge ignores the column \"{}\": a header holding \"Marker\" is read "
               "only when it is exactly {}",
               *header, quoted_list(markers)),
           .suggestion =
               near.empty() ? std::string() : fmt::format("rename it \"{}\"", near.front())});
      continue;
    }
    // A lower-case "marker timecode" holds no "Marker": it is an ordinary column, read by nothing.
    std::vector<std::string> known = read;
    known.insert(known.end(), markers.begin(), markers.end());
    std::vector<std::string> near;
    for (const std::string& candidate : known) {
      if (squashed(*header) == squashed(candidate)) near.push_back(candidate);
    }
    if (near.empty()) near = closest(*header, known, 1);
    if (near.empty()) continue;
    add({.kind = FindingKind::near_header,
         .severity = Severity::warning,
         .column = column_at(column),
         .message = fmt::format(
             "the merge does not read the column \"{}\": headers must match exactly, and it "
             "reads \"{}\"",
             *header, near.front()),
         .suggestion = fmt::format("rename it \"{}\"", near.front())});
  }
}

void FindingsCollector::document_read(Document& document, const std::string& xml_path) {
  const RecoveredErrors& errors = document.recovered_errors();
  if (errors.count > 0) {
    add({.kind = FindingKind::recovered_xml,
         .severity = Severity::warning,
         .message = fmt::format(
             "\"{}\" is not well-formed XML: line {}, column {}: {} ({} error{} in all); a "
             "merge reads only what could be recovered, so clips after line {} may be "
             "missing",
             xml_path, errors.line, errors.column, errors.message, errors.count,
             errors.count == 1 ? "" : "s", errors.line),
         .suggestion = "repair the document or export it again"});
  }
}

void FindingsCollector::clip_matched(const ClipMatch& match, std::size_t position) {
  const ClipRef clip{match.name, match.id};
  clips_.push_back(clip);
  const bool subclip = static_cast<bool>(match.clip.first("subclipinfo"));
  if (subclip) subclips_.push_back(clip);
  if (match.rows.empty()) return;
  clips_by_name_[match.name].push_back(clip);
  if (subclip) {
    for (std::size_t row : match.rows) {
      add({.kind = FindingKind::earlier_subclip,
           .severity = Severity::warning,
           .row = row_at(row),
           .column = column(kNameHeader),
           .clip = clip,
           .message = fmt::format(
               "the clip \"{}\" is a subclip (its clip items hold <subclipinfo>), as a "
               "merge leaves the clips that several rows cut: merging into it again adds "
               "the row's markers a second time and cuts subclips out of the subclip",
               match.name),
           .suggestion = "merge the sheet into the export the earlier merge started from, not into "
                         "its output"});
    }
  }
  if (report_.sheet) {
    for (std::size_t row : match.rows) report_.sheet->rows[row].clips.push_back(clip);
  }
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    if (j == 0 && !match.updates_earlier(j)) continue;
    add({.kind = FindingKind::repeated_name,
         .severity = Severity::note,
         .row = row_at(match.rows[j]),
         .column = column(kNameHeader),
         .clip = clip,
         .message = repeated_name_message(match, j, *rows_)});
  }
  if (!match.beyond_position_limit) return;
  const std::size_t rows = rows_->size();
  for (std::size_t row : match.rows) {
    add({.kind = FindingKind::position_limit,
         .severity = Severity::warning,
         .row = row_at(row),
         .clip = clip,
         .message = fmt::format(
             "clip \"{}\" stands at position {} of the document (counting from 0), not below "
             "the sheet's {} data rows: row {} only clears its In/Out and makes subclip "
             "copies; its duration, subclip, logging fields, markers and aux timecodes are "
             "not written",
             match.name, position, rows, row_at(row)),
         .suggestion = fmt::format("add {} more data row{} (blank rows count) to the sheet",
                                   position + 1 - rows, position + 1 - rows == 1 ? "" : "s")});
  }
}

void FindingsCollector::clip_item_matched(const ClipMatch& match) {
  const std::size_t position = match.rows.front();
  const LogRow& row = (*rows_)[position];
  item_rows_reported_.resize(rows_->size());
  if (item_rows_reported_[position]) return;
  const auto holds_text = [&row](std::string_view header) {
    const std::string* value = row.field(header);
    return value && !value->empty();
  };
  const std::optional<std::string_view> kept = holds_text(kInHeader)    ? std::optional(kInHeader)
                                               : holds_text(kOutHeader) ? std::optional(kOutHeader)
                                               : holds_text(kSubclipNameHeader)
                                                   ? std::optional(kSubclipNameHeader)
                                                   : std::nullopt;
  if (!kept) return;
  item_rows_reported_[position] = true;
  add({.kind = FindingKind::in_out_on_clip_item,
       .severity = Severity::warning,
       .row = row_at(position),
       .column = column(*kept),
       .clip = ClipRef{match.name, match.id},
       .message = fmt::format(
           "no master clip is named \"{}\", so the row logs the clip items of that name in the "
           "sequences: they take its logging fields and markers, but their In, Out and name "
           "are the editor's cut and stay as they are",
           match.name),
       .suggestion = "leave In, Out and Subclip Name empty on rows for clip items"});
}

void FindingsCollector::row_placed(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                                   std::int64_t clip_duration, const RowPlacement& placement) {
  const std::size_t position = match.rows[j];
  const ClipRef clip{match.name, match.id};
  check_cells((*rows_)[position], row_at(position), clip);
  check_number_cells(row_at(position), clip);
  check_single_row(match, j, timing);
  check_words(match, j, timing, placement);
  check_timecodes(match, j, timing, clip_duration, placement);
}

void FindingsCollector::check_number_cells(int at, const ClipRef& clip) {
  for (int column = 1; column <= static_cast<int>(headers_.size()); ++column) {
    const auto* header = std::get_if<std::string>(&headers_[column - 1]);
    if (!header || !is_text_header(*header)) continue;
    if (options_.rules.cells_as_shown) {
      check_date_cell(at, column, *header, clip);
      continue;
    }
    const std::optional<std::string> typed = whole_number_typed(workbook_->cell(at, column));
    if (!typed) continue;
    add({.kind = FindingKind::number_in_text_column,
         .severity = Severity::warning,
         .row = at,
         .column = column_at(column),
         .clip = clip,
         .message =
             fmt::format("the {} cell holds the number {}, which the merge writes as \"{}.0\"",
                         *header, *typed, *typed),
         .suggestion =
             fmt::format("format the {} column as text and type {} again", *header, *typed)});
  }
}

// A date in a text column is written as the sheet shows it; a spreadsheet makes one of what was
// typed as text often enough ("3/4" as a Shot/Take) to say so.
void FindingsCollector::check_date_cell(int at, int column, const std::string& header,
                                        const ClipRef& clip) {
  const Cell& cell = workbook_->cell(at, column);
  if (!std::holds_alternative<DateTime>(cell)) return;
  add({.kind = FindingKind::date_in_text_column,
       .severity = Severity::note,
       .row = at,
       .column = column_at(column),
       .clip = clip,
       .message = fmt::format("the {} cell holds a {}, which the merge writes as the sheet shows "
                              "it: \"{}\"",
                              header, cell_kind_name(cell),
                              shown_text(cell, workbook_->number_format(at, column))),
       .suggestion = fmt::format(
           "if the text typed was meant, format the {} column as text and type it again", header)});
}

void FindingsCollector::check_single_row(const ClipMatch& match, std::size_t j,
                                         const ClipTiming& timing) {
  const LogRow& row = (*rows_)[match.rows[j]];
  const std::string* in = row.field(kInHeader);
  const std::string* out = row.field(kOutHeader);
  if (match.several || match.clip_item || !in || !out || in->empty() || out->empty()) return;
  // A row that repeats the clip's own points, as an exported sheet does, asks for nothing lost.
  if (is_clip_point(*in, match.clip.first("in"), timing) &&
      is_clip_point(*out, match.clip.first("out"), timing)) {
    return;
  }
  add({.kind = FindingKind::in_out_on_single_row,
       .severity = Severity::warning,
       .row = row_at(match.rows[j]),
       .column = column(kInHeader),
       .clip = ClipRef{match.name, match.id},
       .message = fmt::format(
           "the row gives In \"{}\" and Out \"{}\", but it is the only row of clip \"{}\": "
           "In and Out cut subclips only when several rows name a clip, and a single row "
           "leaves the clip's In and Out points as they are",
           *in, *out, match.name),
       .suggestion =
           "to cut subclips, give the clip one row per subclip, each with the same Name"});
}

// Words the merge compares exactly, in the target clip, written in another letter case.
void FindingsCollector::check_words(const ClipMatch& match, std::size_t j, const ClipTiming& timing,
                                    const RowPlacement& placement) {
  const LogRow& row = (*rows_)[match.rows[j]];
  const int at = row_at(match.rows[j]);
  const ClipRef clip{match.name, match.id};
  std::optional<Column> converting;  // the first column whose timecodes use the clip's rate
  if (match.makes_subclip(j) && cuts_subclip(row)) {
    converting = column(kInHeader);
  } else if (!row.markers.empty()) {
    converting = column_at(row.markers.front().timecode_column);
  }
  if (converting && !timing.rate && upper_ascii(timing.ntsc) != timing.ntsc &&
      find_frame_rate(FRAME_RATES, timing.timebase, upper_ascii(timing.ntsc))) {
    add({.kind = FindingKind::word_case,
         .severity = Severity::warning,
         .row = at,
         .column = converting,
         .clip = clip,
         .message = fmt::format(
             "the clip's rate/ntsc reads \"{}\", and only TRUE or FALSE, exactly, give it a "
             "frame rate: without one the merge cannot place the row's timecodes",
             timing.ntsc),
         .suggestion = fmt::format("write {} in the clip's <ntsc>", upper_ascii(timing.ntsc))});
  }
  if (converting && !counts_drop_frames(timing.display_format) &&
      counts_drop_frames(upper_ascii(timing.display_format))) {
    add({.kind = FindingKind::word_case,
         .severity = Severity::warning,
         .row = at,
         .column = converting,
         .clip = clip,
         .message =
             fmt::format("the clip's displayformat reads \"{}\", and only DF, exactly, counts drop "
                         "frames: the row's timecodes are counted without them",
                         timing.display_format),
         .suggestion = "write DF in the clip's <displayformat>"});
  }
  const std::optional<std::string>& file_format = placement.aux.display_format;
  if (!file_format || counts_drop_frames(*file_format) ||
      !counts_drop_frames(upper_ascii(*file_format))) {
    return;
  }
  for (const auto& [header, value] : filled_aux_cells(row)) {
    add({.kind = FindingKind::word_case,
         .severity = Severity::warning,
         .row = at,
         .column = column(header),
         .clip = clip,
         .message = fmt::format(
             "the clip's file timecode displayformat reads \"{}\", and only DF, exactly, "
             "counts drop frames: the {} is counted without them",
             *file_format, header),
         .suggestion = "write DF in the <displayformat> of the clip's file timecode"});
    return;
  }
}

void FindingsCollector::check_cells(const LogRow& row, int at, const ClipRef& clip) {
  const std::string* good = row.field(kGoodHeader);
  const std::optional<std::string> flag =
      good ? good_flag(*good, options_.rules) : std::optional<std::string>();
  if (good && !flag) {
    add({.kind = FindingKind::good_word_unknown,
         .severity = Severity::warning,
         .row = at,
         .column = column(kGoodHeader),
         .clip = clip,
         .message = fmt::format("the Good cell reads \"{}\", which is neither a yes (yes, y, true, "
                                "x, a tick, 1) nor a "
                                "no (no, n, false, 0): the clip's Good is left as it is",
                                *good),
         .suggestion = "write \"yes\" or \"no\""});
  }
  if (flag == "FALSE" && looks_like_yes(*good)) {
    add({.kind = FindingKind::good_not_yes,
         .severity = Severity::warning,
         .row = at,
         .column = column(kGoodHeader),
         .clip = clip,
         .message = fmt::format(
             "the Good cell reads \"{}\", which the merge writes as FALSE: only yes or y "
             "(any letter case, nothing around it) mark a clip good",
             *good),
         .suggestion = "write \"yes\""});
  }
  const std::vector<std::string> colors = to_strings(marker_color_names());
  for (const MarkerEntry& marker : row.markers) {
    if (!marker.color || marker.color->empty() ||
        std::find(colors.begin(), colors.end(), *marker.color) != colors.end()) {
      continue;
    }
    std::vector<std::string> near = closest(*marker.color, colors, 1);
    add({.kind = FindingKind::unknown_marker_color,
         .severity = Severity::warning,
         .row = at,
         .column = column_at(marker.color_column),
         .clip = clip,
         .message = fmt::format(
             "the marker at \"{}\" has the colour \"{}\", which is not in the colour table "
             "({}); the marker will be red",
             marker.timecode, *marker.color, fmt::join(colors, ", ")),
         .suggestion = near.empty() ? std::string() : fmt::format("write \"{}\"", near.front())});
  }
}

bool FindingsCollector::check_frame(const std::string& text, std::int64_t frame,
                                    const TimecodeCell& cell, const ClipTiming& timing,
                                    std::int64_t clip_duration) {
  const std::int64_t base = timing.timebase;
  const std::string start = timecode_in_clip(0, timing);
  const std::string end = timecode_in_clip(clip_duration - 1, timing);
  const std::string span =
      fmt::format("write a timecode from {} (the clip's start) to {} (its end)", start, end);
  const std::string column_name = cell.column ? cell.column->header : std::string(cell.what);
  const std::string fate = cell.left_out.empty()
                               ? std::string()
                               : fmt::format(", so the merge leaves the {} out", cell.left_out);

  if (has_no_digits(text)) {
    add({.kind = FindingKind::timecode_without_digits,
         .severity = Severity::warning,
         .row = cell.row,
         .column = cell.column,
         .clip = cell.clip,
         .message = fmt::format(
             "the {} \"{}\" holds no digits: the merge reads it as 00:00:00:00, frame {} of "
             "the clip{}",
             cell.what, text, frame, fate),
         .suggestion = cell.what == "marker timecode"
                           ? span + ", or empty the cell to leave the marker out"
                           : span});
    return false;
  }
  const std::vector<std::string> fields = timecode_fields(trimmed(text));
  if (const std::optional<std::string> time = time_of_day(trimmed(text))) {
    add({.kind = FindingKind::time_of_day_cell,
         .severity = Severity::warning,
         .row = cell.row,
         .column = cell.column,
         .clip = cell.clip,
         .message = fmt::format(
             "the {} \"{}\" is a time of day, as a spreadsheet stores {} typed into a cell: "
             "the merge reads it as minutes, seconds and frames, frame {} of the clip{}",
             cell.what, text, *time, frame, fate),
         .suggestion = fmt::format(
             "format the {} column as text, then type the timecode with its frames: {}:00",
             column_name, *time)});
    return false;
  }
  if (fields.size() == 3 && std::ranges::all_of(fields, [](const std::string& field) {
        return !field.empty() && !has_no_digits(field) && field.find(' ') == std::string::npos;
      })) {
    const std::string four_fields = fmt::format("{}:{}:{}:00", fields[0], fields[1], fields[2]);
    const std::int64_t as_hours = frame_in_clip(four_fields, timing);
    const std::int64_t frames_field = read_integer(fields[2]);
    const bool inside = frame >= 0 && frame < clip_duration;
    const bool hours_inside = as_hours >= 0 && as_hours < clip_duration;
    if ((frames_field >= base && frames_field < 60) ||
        (timing.start_frame >= 3600 * base && !inside && hours_inside)) {
      add({.kind = FindingKind::three_field_timecode,
           .severity = Severity::warning,
           .row = cell.row,
           .column = cell.column,
           .clip = cell.clip,
           .message = fmt::format(
               "the {} \"{}\" has three fields, which the merge reads as minutes, seconds "
               "and frames: frame {} of a clip that starts at {}; read as hours, minutes "
               "and seconds it would be {}{}",
               cell.what, text, frame, start, four_fields, fate),
           .suggestion = fmt::format("write all four fields: {}", four_fields)});
      return false;
    }
  }
  if (!is_timecode(text, base)) {
    add({.kind = FindingKind::not_a_timecode,
         .severity = Severity::warning,
         .row = cell.row,
         .column = cell.column,
         .clip = cell.clip,
         .message = fmt::format(
             "the {} \"{}\" is not a timecode; the merge reads it as frame {} of the clip{}",
             cell.what, text, frame, fate),
         .suggestion = "write it as hours:minutes:seconds:frames, such as 01:00:10:00"});
    return false;
  }
  if (frame < 0 || frame >= clip_duration) {
    add({.kind = FindingKind::outside_media,
         .severity = Severity::warning,
         .row = cell.row,
         .column = cell.column,
         .clip = cell.clip,
         .message = fmt::format(
             "the {} \"{}\" lies {} the clip's media: it is frame {}, and the clip holds "
             "frames 0 to {}{}",
             cell.what, text, frame < 0 ? "before the start of" : "after the end of", frame,
             clip_duration - 1, fate),
         .suggestion = span});
  }
  return true;
}

void FindingsCollector::check_timecodes(const ClipMatch& match, std::size_t j,
                                        const ClipTiming& timing, std::int64_t clip_duration,
                                        const RowPlacement& placement) {
  const LogRow& row = (*rows_)[match.rows[j]];
  const int at = row_at(match.rows[j]);
  const ClipRef clip{match.name, match.id};
  const std::string_view row_fate = placement.row_left_out ? "row" : "";
  const auto cell = [&](std::optional<Column> where, std::string_view what) {
    return TimecodeCell{at, std::move(where), clip, what, row_fate};
  };

  if (placement.subclip) {
    const std::string& in = *row.field(kInHeader);
    const std::string& out = *row.field(kOutHeader);
    const FrameSpan span = *placement.subclip;
    const bool in_read =
        check_frame(in, span.first, cell(column(kInHeader), kInHeader), timing, clip_duration);
    const bool out_read =
        check_frame(out, span.last, cell(column(kOutHeader), kOutHeader), timing, clip_duration);
    if (in_read && out_read && span.last < span.first) {
      add({.kind = FindingKind::out_before_in,
           .severity = Severity::warning,
           .row = at,
           .column = column(kOutHeader),
           .clip = clip,
           .message = placement.row_left_out
                          ? fmt::format("the Out \"{}\" comes before the In \"{}\", so the merge "
                                        "leaves the row out",
                                        out, in)
                          : fmt::format("the Out \"{}\" comes before the In \"{}\": the subclip "
                                        "gets the duration {}",
                                        out, in, span.last + 1 - span.first),
           .suggestion = "swap In and Out"});
    }
  }
  for (std::size_t i = 0; placement.marker_frames && i < row.markers.size(); ++i) {
    const MarkerEntry& marker = row.markers[i];
    const std::int64_t frame = (*placement.marker_frames)[i];
    const std::optional<Column> where = column_at(marker.timecode_column);
    const bool read = check_frame(
        marker.timecode, frame,
        {.row = at,
         .column = where,
         .clip = clip,
         .what = "marker timecode",
         .left_out = i < placement.markers_left_out.size() && placement.markers_left_out[i]
                         ? "marker"
                         : ""},
        timing, clip_duration);
    if (!read || !placement.markers_present[i]) continue;
    const std::string name = marker_name(marker, i);
    if (placement.skips_present_markers) {
      add({.kind = FindingKind::marker_already_present,
           .severity = Severity::note,
           .row = at,
           .column = where,
           .clip = clip,
           .message = fmt::format(
               "the clip already has the marker \"{}\" at \"{}\" (frame {}), as after an earlier "
               "merge of this row: it is left as it is",
               name, marker.timecode, frame)});
      continue;
    }
    add({.kind = FindingKind::marker_already_present,
         .severity = Severity::warning,
         .row = at,
         .column = where,
         .clip = clip,
         .message =
             fmt::format("the clip already has the marker \"{}\" at \"{}\" (frame {}): markers are "
                         "only ever added, so a second one would stand on it, as when a merged "
                         "document is merged again",
                         name, marker.timecode, frame),
         .suggestion = "merge into the export the earlier merge started from, or take the marker "
                       "out of the row"});
  }
  for (const auto& [header, value] : filled_aux_cells(row)) {
    if (!placement.aux.display_format) {
      add({.kind = FindingKind::aux_not_written,
           .severity = Severity::warning,
           .row = at,
           .column = column(header),
           .clip = clip,
           .message = fmt::format(
               "the {} \"{}\" is not written: aux timecodes go into the clip's file, counted "
               "in its timecode's display format, and the clip shows no such file",
               header, value),
           .suggestion = "leave the cell empty, or log the clip whose file this is"});
      continue;
    }
    if (is_timecode(value, timing.timebase)) continue;
    add({.kind = FindingKind::not_a_timecode,
         .severity = Severity::warning,
         .row = at,
         .column = column(header),
         .clip = clip,
         .message = fmt::format(
             "the {} \"{}\" is not a timecode{}", header, value,
             placement.aux.leaves_out_non_timecodes ? ", so the merge leaves it out" : ""),
         .suggestion = "write it as hours:minutes:seconds:frames, such as 01:00:10:00"});
  }
}

void FindingsCollector::merge_finished(const std::vector<bool>& row_used) {
  check_unmatched(row_used);
  check_shared_names();
  flush_findings();
}

void FindingsCollector::flush_findings() {
  std::stable_sort(row_findings_.begin(), row_findings_.end(),
                   [](const Finding& a, const Finding& b) { return *a.row < *b.row; });
  for (Finding& finding : row_findings_) report_.findings.push_back(std::move(finding));
  row_findings_.clear();
}

void FindingsCollector::check_unmatched(const std::vector<bool>& row_used) {
  const std::optional<Column> name_column = column(kNameHeader);
  // Built on the first unmatched row that needs them.
  std::optional<ClipsByName> by_key;
  std::optional<NameIndex> names;
  const ClipsByName subclips_by_origin = subclips_by_copied_id(subclips_);
  std::size_t comparisons_left = kNameComparisons;
  for (std::size_t position = 0; position < rows_->size(); ++position) {
    const LogRow& row = (*rows_)[position];
    if (row_used[position] || is_blank(row)) continue;
    const std::string* name = row.field(kNameHeader);
    if (!name) {
      add({.kind = FindingKind::unmatched_name,
           .severity = Severity::warning,
           .row = row_at(position),
           .message = "the sheet has no \"Name\" column, so no row names a clip",
           .suggestion = "head the column of clip names \"Name\""});
      continue;
    }
    if (check_earlier_subclips(*name, row_at(position), subclips_by_origin)) continue;
    std::optional<ClipRef> same;
    NearMiss reasons;
    if (!by_key) by_key = clips_by_near_miss_key(clips_);
    if (const auto found = by_key->find(near_miss_key(*name)); found != by_key->end()) {
      for (const ClipRef* clip : found->second) {
        reasons = near_miss_reasons(*name, clip->name);
        if (reasons.any()) {
          same = *clip;
          break;
        }
      }
    }
    std::string message = name->empty() ? std::string("the row has no Name, so it names no clip")
                                        : fmt::format("no clip is named \"{}\"", *name);
    std::string suggestion;
    if (same) {
      message += fmt::format("; the clip \"{}\" would match if {} were set aside", same->name,
                             describe(reasons));
      suggestion = fmt::format("write \"{}\"", same->name);
      if (whole_number_typed(workbook_->cell(row_at(position), column_index(kNameHeader)))) {
        suggestion = fmt::format("format the Name column as text and type {} again", same->name);
      }
    } else if (!name->empty()) {
      if (!names) names = clip_name_index(clips_);
      suggestion = closest_names_suggestion(*name, *names, comparisons_left);
    }
    add({.kind = FindingKind::unmatched_name,
         .severity = Severity::warning,
         .row = row_at(position),
         .column = name_column,
         .clip = std::move(same),
         .message = std::move(message),
         .suggestion = std::move(suggestion)});
  }
}

bool FindingsCollector::check_earlier_subclips(const std::string& name, int at,
                                               const ClipsByName& subclips_by_origin) {
  const auto found = subclips_by_origin.find(name);
  if (found == subclips_by_origin.end()) return false;
  std::vector<std::string> made;
  for (const ClipRef* subclip : found->second) made.push_back(fmt::format("\"{}\"", subclip->name));
  add({.kind = FindingKind::earlier_subclip,
       .severity = Severity::warning,
       .row = at,
       .column = column(kNameHeader),
       .clip = *found->second.front(),
       .message = fmt::format(
           "no clip is named \"{}\" any more: an earlier merge cut the clip of id \"{}\" "
           "into subclips, now named {}, so the rows that name it match nothing",
           name, name, fmt::join(made, ", ")),
       .suggestion =
           "merge the sheet into the export the earlier merge started from, not into its output"});
  return true;
}

void FindingsCollector::check_shared_names() {
  for (const auto& [name, clips] : clips_by_name_) {
    if (clips.size() < 2) continue;
    std::vector<std::string> ids;
    for (const ClipRef& clip : clips) ids.push_back(clip.id.value_or("no id"));
    for (std::size_t position = 0; position < rows_->size(); ++position) {
      const std::string* row_name = (*rows_)[position].field(kNameHeader);
      if (!row_name || *row_name != name) continue;
      add({.kind = FindingKind::shared_clip_name,
           .severity = Severity::warning,
           .row = row_at(position),
           .column = column(kNameHeader),
           .clip = clips.front(),
           .message = fmt::format("{} clips are named \"{}\" (ids {}): each of them gets this row",
                                  clips.size(), name, fmt::join(ids, ", "))});
    }
  }
}

}  // namespace pellago
