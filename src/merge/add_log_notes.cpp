#include "merge/add_log_notes.hpp"

#include <fmt/format.h>
#include <libxml/parser.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <exception>
#include <future>
#include <mutex>
#include <system_error>

#include "document/document.hpp"
#include "error.hpp"
#include "merge/clip_match.hpp"
#include "merge/merge_document.hpp"
#include "merge/merge_observer.hpp"
#include "merge/output_file.hpp"
#include "merge/subclips.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

namespace {

std::vector<LogRow> read_rows(const Workbook& workbook, const std::vector<Cell>& headers,
                              const SheetLayout& layout, const std::string& sheet_path,
                              const Rules& rules) {
  std::vector<LogRow> rows;
  try {
    rows = read_log_rows(workbook, headers, layout);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}", sheet_path, error.what()), error);
  }
  if (rules.blank_cells_change_nothing) leave_out_blank_cells(rows);
  return rows;
}

// Memory a thread frees stays in its own malloc arena, where the calling thread's allocations do
// not find it: glibc is told to return the freed pages to the system.
void give_back_freed_memory() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
}

// The sheet past its header row.
struct SheetRows {
  std::optional<Workbook> workbook;  // kept only for an observer
  std::vector<LogRow> rows;
};

// Reads the rest of the worksheet and its log rows on a second thread, so that the sheet is read
// while the XML document is parsed; on the calling thread when no thread can be started. get()
// gives the rows or rethrows the failure. `reading`, `headers` and `sheet_path` must outlive the
// future. libxml2 keeps its error handlers per thread: the worksheet's parser routes its own on
// whichever thread it runs, and the calling thread's stay as they are.
std::future<SheetRows> read_rest_in_background(WorkbookReading& reading,
                                               const std::vector<Cell>& headers,
                                               const SheetLayout& layout,
                                               const std::string& sheet_path, const Rules& rules,
                                               bool keep_workbook) {
  auto read_rest = [&reading, &headers, &layout, &sheet_path, &rules, keep_workbook] {
    SheetRows sheet{.workbook = reading.finish(), .rows = {}};
    sheet.rows = read_rows(*sheet.workbook, headers, layout, sheet_path, rules);
    // A plain merge frees the cells now, before the document has grown.
    if (!keep_workbook) {
      sheet.workbook.reset();
      give_back_freed_memory();
    }
    return sheet;
  };
  xmlInitParser();  // libxml2 sets up its global state once, before a second thread uses it
  try {
    return std::async(std::launch::async, read_rest);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, read_rest);
  }
}

void set_update_behaviors(const Document& document) {
  for (Element behavior : document.all("updatebehavior")) behavior.set_text("replaceoradd");
}

std::size_t count_unmatched_rows(const std::vector<LogRow>& rows,
                                 const std::vector<bool>& row_used) {
  std::size_t unmatched = 0;
  for (std::size_t position = 0; position < rows.size(); ++position) {
    if (!row_used[position] && !is_blank(rows[position])) ++unmatched;
  }
  return unmatched;
}

// Keeps the document, reachable, until the process ends.
void keep_until_exit(Document document) {
  static std::mutex mutex;
  static auto* kept = new std::vector<Document>;
  const std::lock_guard lock(mutex);
  kept->push_back(std::move(document));
}

// The document, ending in a line feed whether or not libxml2's output did.
void write_document(const Document& document, const OutputSink& sink) {
  char last = '\0';
  document.write([&](std::string_view bytes) {
    if (bytes.empty()) return;
    sink(bytes);
    last = bytes.back();
  });
  if (last != '\n') sink("\n");
}

void report_progress(const Host& host, MergePhase phase, std::size_t done = 0,
                     std::size_t total = 0) {
  if (!host.progress) return;
  host.progress({.done = static_cast<std::int64_t>(done),
                 .total = static_cast<std::int64_t>(total),
                 .phase = phase});
}

void refuse_recovered(const RecoveredErrors& errors, const std::string& xml_path) {
  if (errors.count == 0) return;
  throw Error(
      fmt::format("\"{}\" is not well-formed XML: line {}, column {}: {} ({} in all); nothing is "
                  "merged, as the clips after that line would be lost: export it again, or "
                  "merge what can be read with --recover",
                  xml_path, errors.line, errors.column, errors.message,
                  errors.count == 1 ? "1 error" : fmt::format("{} errors", errors.count)));
}

bool cancel_requested(const Host& host) { return host.cancel_requested && host.cancel_requested(); }

}  // namespace

void require_xmeml_root(const Document& document, const std::string& xml_path) {
  const Element root = document.root();
  if (root && root.name() == "xmeml") return;
  const RecoveredErrors& errors = document.recovered_errors();
  const std::string first_error =
      errors.count == 0
          ? std::string()
          : fmt::format(" (line {}, column {}: {})", errors.line, errors.column, errors.message);
  throw Error(fmt::format("\"{}\" is not a Final Cut Pro XML export: {}{}", xml_path,
                          root ? fmt::format("its root element is <{}>, not <xmeml>", root.name())
                               : std::string("it holds no XML element"),
                          first_error));
}

bool is_blank(const LogRow& row) {
  return row.markers.empty() &&
         std::ranges::all_of(row.values, [](const std::string& value) { return value.empty(); });
}

SheetKind log_sheet_kind(const std::string& path, const Rules& rules) {
  return rules.sheet_as_typed ? sheet_kind_ignoring_case(path) : sheet_kind(path);
}

MergedDocument merge_document(const std::string& sheet_path, const std::string& xml_path,
                              const Host& host, MergeObserver* observer) {
  const SheetKind kind = log_sheet_kind(sheet_path, host.rules);
  if (kind == SheetKind::not_a_log_sheet) return {};
  const LibxmlErrors quiet;

  report_progress(host, MergePhase::reading_sheet);
  WorkbookReading reading = start_reading_workbook(
      sheet_path, kind, log_sheet_choice(host.worksheet, host.rules.sheet_as_typed));
  const SheetLayout layout{
      .header_row = host.rules.sheet_as_typed ? find_header_row(reading.sheet()) : 1,
      .as_typed = host.rules.sheet_as_typed,
      .as_shown = host.rules.cells_as_shown};
  const std::vector<Cell> headers = read_header_row(reading.sheet(), layout.header_row);
  if (host.set_column_headers) host.set_column_headers(headers);
  std::future<SheetRows> sheet = read_rest_in_background(reading, headers, layout, sheet_path,
                                                         host.rules, observer != nullptr);

  report_progress(host, MergePhase::reading_xml);
  std::optional<Document> parsed;
  std::exception_ptr xml_failure;
  try {
    parsed = Document::parse_file(xml_path);
  } catch (...) {
    xml_failure = std::current_exception();
  }
  // The sheet's failure comes first, as it would have had the sheet been read before the XML.
  const SheetRows sheet_rows = sheet.get();
  const std::vector<LogRow>& rows = sheet_rows.rows;
  if (observer) observer->sheet_read(*sheet_rows.workbook, headers, rows);
  if (xml_failure) std::rethrow_exception(xml_failure);
  Document document = std::move(*parsed);
  require_xmeml_root(document, xml_path);
  if (host.rules.refuse_malformed_xml) refuse_recovered(document.recovered_errors(), xml_path);
  if (observer) observer->document_read(document, xml_path);
  set_update_behaviors(document);
  const std::vector<Element> clips = document.all("clip");
  report_progress(host, MergePhase::merging_clips, 0, clips.size());

  MergeReport report{.outcome = Outcome::merged, .recovered = document.recovered_errors()};
  const RowsByName index = index_rows_by_name(rows);
  const DescribedFiles files =
      host.rules.follow_file_references ? described_files(document) : DescribedFiles{};
  const EarlierSubclips earlier =
      host.rules.merge_again_in_place ? earlier_subclips(clips) : EarlierSubclips{};
  MergeRun run{rows,     index,  document, host, report, std::vector<bool>(rows.size()),
               observer, &files, &earlier};
  for (std::size_t position = 0; position < clips.size(); ++position) {
    if (cancel_requested(host)) break;
    report_progress(host, MergePhase::merging_clips, position + 1, clips.size());
    visit_clip(clips[position], position, run);
  }
  if (host.rules.log_clip_items && !cancel_requested(host)) visit_clip_items(document, run);
  report.rows_unmatched = count_unmatched_rows(rows, run.row_used);
  if (cancel_requested(host)) {
    report.outcome = Outcome::cancelled;
    return {report, std::nullopt};
  }
  if (observer) observer->merge_finished(run.row_used);
  return {report, std::move(document)};
}

MergeReport add_log_notes(const std::string& sheet_path, const std::string& xml_path,
                          const std::string& output_path, const Host& host) {
  if (log_sheet_kind(sheet_path, host.rules) == SheetKind::not_a_log_sheet) return {};
  check_output_target(output_path, sheet_path);
  MergedDocument merged = merge_document(sheet_path, xml_path, host, nullptr);
  if (!merged.document) return merged.report;
  const Document& document = *merged.document;
  report_progress(host, MergePhase::writing);
  write_file_replacing(output_path,
                       [&document](const OutputSink& sink) { write_document(document, sink); });
  if (host.keep_document_until_exit) keep_until_exit(std::move(*merged.document));
  return merged.report;
}

}  // namespace pellago
