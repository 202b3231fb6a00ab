#include "export/export_sheet.hpp"

#include <fmt/format.h>
#include <stdlib.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "document/document.hpp"
#include "error.hpp"
#include "merge/clip_match.hpp"
#include "merge/merge_document.hpp"
#include "merge/output_file.hpp"
#include "merge/required_element.hpp"
#include "merge/resolve_clip_timing.hpp"
#include "sheet/columns.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/read_integer.hpp"
#include "timecode/to_frames.hpp"
#include "timecode/trimmed.hpp"
#include "workbook/workbook.hpp"

namespace pellago {

namespace {

namespace fs = std::filesystem;

// What a column of the merge holds for a clip.
enum class Content { name, point, good, text, empty };

constexpr Content content_of(ColumnRole role) {
  switch (role) {
    case ColumnRole::name:
      return Content::name;
    case ColumnRole::in_point:
    case ColumnRole::out_point:
      return Content::point;
    case ColumnRole::good:
      return Content::good;
    case ColumnRole::logging_text:
      return Content::text;
    default:
      return Content::empty;
  }
}

// The merge adds the element its cells go into, or fails, when a clip lacks it: an In or Out
// point, and a logging field that is not written into every match.
constexpr bool needs_element(const SheetColumn& column) {
  const Content content = content_of(column.role);
  return content == Content::point || (content != Content::empty && content != Content::name &&
                                       column.write != ElementWrite::every_match);
}

// Columns after the merge's, with headers it ignores: what the clips hold already, for the logger
// to see. One group of the marker timecode, name and comment per marker, as many as the clip with
// the most markers needs; an aux column when some clip has that aux timecode.
constexpr std::array<std::string_view, 3> kMarkerInProject{header_of<ColumnRole::marker_timecode>(),
                                                           header_of<ColumnRole::marker_name>(),
                                                           header_of<ColumnRole::marker_comment>()};
constexpr auto kAuxColumns = columns_of<ColumnRole::aux_timecode>();
constexpr double kInProjectWidth = 16;

struct WrittenColumn {
  std::string header;
  double width;
};

struct SheetRow {
  std::string name;
  std::vector<std::string> cells;  // one per column
};

// The clips of one name, in document order: master clips, or clip items of sequences.
struct NamedClips {
  std::string name;
  std::vector<Element> clips;
  std::size_t last_position = 0;  // of the last of them among all the document's clips
  bool clip_items = false;
};

// What a document's files are and how its clips are timed, as the merge under the default rules
// sees them: a clip item is logged only under those.
struct Timing {
  DescribedFiles files;

  ClipTiming of(const NamedClips& named, Element clip) const {
    return named.clip_items ? resolve_clip_timing(clip, FRAME_RATES, default_rules(), &files)
                            : resolve_clip_timing(clip, FRAME_RATES);
  }
};

// The clip items of the sequences by the name a row logs them by (their own, or their file's
// without its extension), for the names no master clip has, in document order.
void add_clip_item_names(const Document& document, const DescribedFiles& files,
                         std::vector<NamedClips>& names,
                         std::unordered_map<std::string, std::size_t>& index) {
  for (Element item : document.all("clipitem")) {
    if (!in_sequence(item)) continue;
    const Element own_name = item.child("name");
    std::string text = own_name ? own_name.text() : file_stem(item, &files);
    if (text.empty()) continue;
    const auto [at, added] = index.try_emplace(text, names.size());
    if (added) names.push_back({std::move(text), {}, 0, true});
    if (names[at->second].clip_items) names[at->second].clips.push_back(item);
  }
}

std::vector<NamedClips> clips_by_name(const Document& document, const DescribedFiles& files) {
  std::vector<NamedClips> names;
  std::unordered_map<std::string, std::size_t> index;
  const std::vector<Element> clips = document.all("clip");
  for (std::size_t position = 0; position < clips.size(); ++position) {
    const Element clip = clips[position];
    const Element name = clip.first("name");
    if (!name) continue;
    std::string text = name.text();
    // An empty Name cannot be told apart from a blank row.
    if (text.empty()) continue;
    const auto [at, added] = index.try_emplace(text, names.size());
    if (added) names.push_back({std::move(text), {}});
    names[at->second].clips.push_back(clip);
    names[at->second].last_position = position;
  }
  add_clip_item_names(document, files, names, index);
  return names;
}

// Why the merge cannot apply a row to the clip: the elements every matched row needs.
std::optional<std::string> unloggable(const NamedClips& named, Element clip, const Timing& timing) {
  try {
    timing.of(named, clip);
  } catch (const Error& error) {
    return error.what();
  }
  if (!clip.first("duration")) return "no <duration> element";
  return std::nullopt;
}

std::vector<NamedClips> loggable_names(std::vector<NamedClips> names, const Timing& timing,
                                       ExportReport& report) {
  std::erase_if(names, [&report, &timing](const NamedClips& named) {
    for (Element clip : named.clips) {
      if (auto reason = unloggable(named, clip, timing)) {
        report.names_left_out.push_back({named.name, std::move(*reason)});
        return true;
      }
    }
    return false;
  });
  return names;
}

// The name of the first clip without a `selector` element, if any.
std::optional<std::string> first_lacking(const std::vector<NamedClips>& names,
                                         std::string_view selector) {
  for (const NamedClips& named : names) {
    if (named.clip_items) continue;  // the classic rules, which never log them, keep their elements
    for (Element clip : named.clips) {
      if (!clip.first(selector)) return named.name;
    }
  }
  return std::nullopt;
}

// The merge columns to write: those that need an element only when every clip holds it.
std::vector<SheetColumn> written_columns(const std::vector<NamedClips>& names,
                                         ExportReport& report) {
  std::vector<SheetColumn> columns;
  for (const SheetColumn& column : kSheetColumns) {
    const auto lacking =
        needs_element(column) ? first_lacking(names, column.element) : std::nullopt;
    if (lacking) {
      report.columns_left_out.push_back(
          {std::string(column.header), *lacking, element_path(column.element)});
    } else {
      columns.push_back(column);
    }
  }
  return columns;
}

double conversion_rate(const ClipTiming& timing) {
  return timing.rate ? timing.rate->fcp_rate : static_cast<double>(timing.timebase);
}

// An in or out point as the timecode of its frame; empty when unset (-1).
std::string point_text(Element point, const ClipTiming& timing) {
  if (!point) return {};
  const std::int64_t frames = read_integer(point.text());
  if (frames == -1) return {};
  return to_timecode(timing.start_frame + frames, conversion_rate(timing), timing.display_format);
}

std::string text_of(Element element) { return element ? element.text() : std::string(); }

std::string cell_text(const SheetColumn& column, const NamedClips& named,
                      const ClipTiming& timing) {
  const Element clip = named.clips.front();
  switch (content_of(column.role)) {
    case Content::name:
      return named.name;
    case Content::point:
      // A clip item's In and Out are the editor's cut, which the merge leaves alone.
      return named.clip_items ? std::string() : point_text(clip.first(column.element), timing);
    case Content::good:
      return upper_ascii(text_of(clip.first(column.element))) == "TRUE" ? "yes" : "";
    case Content::text:
      return text_of(clip.first(column.element));
    case Content::empty:
      break;
  }
  return {};
}

// Timecode, name and comment of each marker the clip holds.
std::vector<std::array<std::string, 3>> markers_in_project(Element clip, const ClipTiming& timing) {
  std::vector<std::array<std::string, 3>> markers;
  for (Element marker : clip.children("marker")) {
    markers.push_back({point_text(marker.first("in"), timing), text_of(marker.first("name")),
                       text_of(marker.first("comment"))});
  }
  return markers;
}

// An auxiliary timecode as the merge would read it back from "Aux TC 1" or "Aux TC 2": at the
// clip's timebase and the display format of the file's own timecode.
std::string aux_in_project(Element clip, const ClipTiming& timing, std::string_view selector) {
  const Element aux = clip.first(selector);
  if (!aux) return {};
  const Element file_format = clip.first("file/timecode/displayformat");
  return to_timecode(read_integer(text_of(aux.first("frame"))),
                     static_cast<double>(timing.timebase),
                     file_format ? file_format.text() : timing.display_format);
}

struct Sheet {
  std::vector<WrittenColumn> columns;
  std::vector<SheetRow> rows;
  std::size_t blank_rows = 0;  // after the rows
};

// The merge writes a row only into clips whose position among all the document's clips is below
// the sheet's row count. Clips sharing a name, or without one, leave the sheet shorter than that:
// blank rows make up the difference. Blank rows match clips whose name is empty, though; with
// such a clip there are none.
std::size_t blank_rows_needed(const Document& document, const std::vector<NamedClips>& names) {
  for (Element clip : document.all("clip")) {
    const Element name = clip.first("name");
    if (name && name.text().empty()) return 0;
  }
  std::size_t rows_needed = 0;
  for (const NamedClips& named : names) {
    rows_needed = std::max(rows_needed, named.last_position + 1);
  }
  return rows_needed > names.size() ? rows_needed - names.size() : 0;
}

Sheet sheet_of(const std::vector<NamedClips>& names, const std::vector<SheetColumn>& columns,
               const Timing& timings) {
  Sheet sheet;
  for (const SheetColumn& column : columns) {
    sheet.columns.push_back({std::string(column.header), column.export_width});
  }
  std::vector<std::vector<std::array<std::string, 3>>> markers;
  std::array<std::vector<std::string>, kAuxColumns.size()> aux;
  std::size_t marker_groups = 0;
  std::array<bool, kAuxColumns.size()> aux_held{};
  for (const NamedClips& named : names) {
    const Element clip = named.clips.front();
    const ClipTiming timing = timings.of(named, clip);
    SheetRow row{named.name, {}};
    for (const SheetColumn& column : columns) row.cells.push_back(cell_text(column, named, timing));
    sheet.rows.push_back(std::move(row));
    markers.push_back(markers_in_project(clip, timing));
    marker_groups = std::max(marker_groups, markers.back().size());
    for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
      aux[i].push_back(aux_in_project(clip, timing, kAuxColumns[i].element));
      aux_held[i] = aux_held[i] || !aux[i].back().empty();
    }
  }
  for (std::size_t group = 0; group < marker_groups; ++group) {
    for (std::string_view header : kMarkerInProject) {
      sheet.columns.push_back({in_project_header(header), kInProjectWidth});
    }
    for (std::size_t r = 0; r < sheet.rows.size(); ++r) {
      for (std::size_t i = 0; i < 3; ++i) {
        sheet.rows[r].cells.push_back(group < markers[r].size() ? markers[r][group][i] : "");
      }
    }
  }
  for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
    if (!aux_held[i]) continue;
    sheet.columns.push_back({in_project_header(kAuxColumns[i].header), kInProjectWidth});
    for (std::size_t r = 0; r < sheet.rows.size(); ++r) sheet.rows[r].cells.push_back(aux[i][r]);
  }
  return sheet;
}

// A file in the temporary folder for libxlsxwriter, which writes to a file name; removed at the
// end.
class ScratchFile {
 public:
  ScratchFile() {
    std::string pattern = (fs::temp_directory_path() / "pellago-export-XXXXXX").string();
    const int fd = mkstemp(pattern.data());
    if (fd < 0)
      throw Error(fmt::format("cannot create a temporary file: {}", strerror(errno)), errno);
    close(fd);
    path_ = pattern;
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { unlink(path_.c_str()); }

  const std::string& path() const { return path_; }

  // Hands the file's bytes to `sink` in chunks.
  void copy_to(const OutputSink& sink) const {
    std::ifstream file(path_, std::ios::binary);
    std::array<char, 65536> chunk;
    while (file.read(chunk.data(), chunk.size()) || file.gcount() > 0) {
      sink(std::string_view(chunk.data(), static_cast<std::size_t>(file.gcount())));
    }
    if (!file.eof()) throw Error(fmt::format("cannot read the temporary file \"{}\"", path_));
  }

 private:
  std::string path_;
};

void check(lxw_error error, std::string_view what) {
  if (error != LXW_NO_ERROR) throw Error(fmt::format("cannot {}: {}", what, lxw_strerror(error)));
}

// The sheet as an .xlsx file at `path`: bold frozen header row, every column formatted as text so
// that what a logger types ("101", "01:00:10:00") stays text.
void write_workbook(const Sheet& sheet, const std::string& path) {
  lxw_workbook* workbook = workbook_new(path.c_str());
  if (workbook == nullptr) throw Error(fmt::format("cannot create a workbook in \"{}\"", path));
  lxw_worksheet* worksheet = workbook_add_worksheet(workbook, "Log Sheet");
  lxw_format* text = workbook_add_format(workbook);
  format_set_num_format(text, "@");
  lxw_format* header = workbook_add_format(workbook);
  format_set_num_format(header, "@");
  format_set_bold(header);
  try {
    for (std::size_t c = 0; c < sheet.columns.size(); ++c) {
      const auto column = static_cast<lxw_col_t>(c);
      check(worksheet_set_column(worksheet, column, column, sheet.columns[c].width, text),
            "set the column widths");
      check(worksheet_write_string(worksheet, 0, column, sheet.columns[c].header.c_str(), header),
            "write the header row");
    }
    worksheet_freeze_panes(worksheet, 1, 0);
    for (std::size_t r = 0; r < sheet.rows.size(); ++r) {
      const SheetRow& row = sheet.rows[r];
      for (std::size_t c = 0; c < row.cells.size(); ++c) {
        if (row.cells[c].empty()) continue;
        check(worksheet_write_string(worksheet, static_cast<lxw_row_t>(r + 1),
                                     static_cast<lxw_col_t>(c), row.cells[c].c_str(), text),
              fmt::format("write \"{}\" of clip {}", sheet.columns[c].header, row.name));
      }
    }
    // A row is in use only when a cell of it holds a value: the last blank row gets an empty text,
    // which only a formula can hold.
    if (sheet.blank_rows > 0) {
      check(worksheet_write_formula_str(
                worksheet, static_cast<lxw_row_t>(sheet.rows.size() + sheet.blank_rows), 0, "=\"\"",
                text, ""),
            "write the blank rows");
    }
  } catch (const Error&) {
    workbook_close(workbook);
    throw;
  }
  check(workbook_close(workbook), "write the workbook");
}

}  // namespace

ExportReport export_log_sheet(const std::string& xml_path, const std::string& sheet_path,
                              ExistingSheet existing) {
  if (sheet_kind(sheet_path) != SheetKind::xlsx) {
    throw Error(
        fmt::format("\"{}\" does not end in .xlsx: the log sheet is written as an .xlsx "
                    "workbook",
                    sheet_path));
  }
  std::error_code status_error;
  if (existing == ExistingSheet::refuse &&
      fs::exists(fs::symlink_status(sheet_path, status_error))) {
    throw Error(fmt::format("\"{}\" exists already", sheet_path), EEXIST);
  }
  check_output_target(sheet_path);
  const Document document = Document::parse_file(xml_path);
  require_xmeml_root(document, xml_path);
  ExportReport report;
  report.recovered = document.recovered_errors();
  const Timing timing{described_files(document)};
  const std::vector<NamedClips> names =
      loggable_names(clips_by_name(document, timing.files), timing, report);
  report.rows = names.size();
  for (const NamedClips& named : names) {
    (named.clip_items ? report.clip_items : report.clips) += named.clips.size();
  }
  Sheet sheet = sheet_of(names, written_columns(names, report), timing);
  sheet.blank_rows = blank_rows_needed(document, names);

  const ScratchFile scratch;
  try {
    write_workbook(sheet, scratch.path());
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}", sheet_path, error.what()));
  }
  write_file_replacing(sheet_path, [&scratch](const OutputSink& sink) { scratch.copy_to(sink); });
  return report;
}

}  // namespace pellago
