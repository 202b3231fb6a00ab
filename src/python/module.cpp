// The Python module `pellago`: the engine's merge, sheet reading and timecode conversion, with the
// GIL released while the engine works.

#include <fmt/format.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "check/check.hpp"
#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/messages.hpp"
#include "sheet/log_sheet_file.hpp"
#include "timecode/to_frames.hpp"
#include "version.hpp"

namespace py = pybind11;
using namespace pybind11::literals;

namespace pellago::python {

namespace {

// pellago.Error and pellago.NotALogSheet; made once when the module is imported and kept for the
// life of the process.
PyObject* error_type = nullptr;
PyObject* not_a_log_sheet_type = nullptr;

// Raises pellago.NotALogSheet for a path that names no log sheet.
[[noreturn]] void raise_not_a_log_sheet(const std::filesystem::path& sheet) {
  PyErr_SetString(not_a_log_sheet_type, not_a_log_sheet_message(sheet.string()).c_str());
  throw py::error_already_set();
}

// pellago.Error with the message, the sheet row, column and clip of `error` (None when unknown).
py::object python_error(const Error& error) {
  py::object raised = py::handle(error_type)(error.what());
  raised.attr("row") = py::cast(error.row);
  raised.attr("column") = py::cast(error.column);
  raised.attr("clip") = py::cast(error.clip);
  return raised;
}

// Turns pellago::Error into OSError (FileNotFoundError, PermissionError... chosen by Python from
// the errno) when a system call failed, into pellago.Error otherwise. Other exceptions go on to
// pybind11's own translators (std::bad_alloc becomes MemoryError).
void translate_engine_error(std::exception_ptr exception) {
  try {
    if (exception) std::rethrow_exception(exception);
  } catch (const Error& error) {
    if (error.system_error == 0) {
      PyErr_SetObject(error_type, python_error(error).ptr());
      return;
    }
    PyObject* os_error =
        PyObject_CallFunction(PyExc_OSError, "is", error.system_error, error.what());
    if (os_error == nullptr) return;  // the exception of the failed call is set instead
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(os_error)), os_error);
    Py_DECREF(os_error);
  }
}

// Whether `function` takes a third positional argument, for the phase: a callback that takes two
// is called as it always was, with the clip counts alone.
bool takes_phase(const py::function& function) {
  try {
    py::module_::import("inspect").attr("signature")(function).attr("bind")(0, 0, 0);
    return true;
  } catch (py::error_already_set& error) {
    // ValueError: a callable whose signature Python cannot tell; TypeError: no third argument.
    if (!error.matches(PyExc_TypeError) && !error.matches(PyExc_ValueError)) throw;
    return false;
  }
}

// The merge's progress, passed on as progress(done, total, phase) at every report, or as
// progress(done, total) for the clips alone. The engine calls from the merging thread with the
// GIL released; each call takes the GIL only for the Python call.
class ProgressCallback {
 public:
  explicit ProgressCallback(py::function function)
      : function_(std::move(function)), with_phase_(takes_phase(function_)) {}

  void report(const ProgressReport& report) {
    if (with_phase_ || report.phase == MergePhase::merging_clips) call(report);
  }

  bool cancelled() const { return cancelled_; }

  // What the callback raised, if it did; rethrown once the merge has ended.
  void rethrow_raised() const {
    if (raised_) std::rethrow_exception(raised_);
  }

 private:
  // False from the callback, an exception from it, or a signal handler that raised (Ctrl-C) ends
  // the merge at its next cancellation point.
  void call(const ProgressReport& report) {
    if (cancelled_) return;
    py::gil_scoped_acquire gil;
    try {
      const py::object answer = with_phase_ ? function_(report.done, report.total, report.phase)
                                            : function_(report.done, report.total);
      if (answer.ptr() == Py_False) cancelled_ = true;
      if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    } catch (...) {
      raised_ = std::current_exception();
      cancelled_ = true;
    }
  }

  py::function function_;
  bool with_phase_;
  bool cancelled_ = false;
  std::exception_ptr raised_;
};

// The rules classic=... and recover=... ask for: recover, when given, decides whether a document
// that is not well-formed is merged as far as it can be read.
Rules chosen_rules(bool classic, std::optional<bool> recover) {
  Rules rules = rules_for(classic);
  if (recover) rules.refuse_malformed_xml = !*recover;
  return rules;
}

// A path given as str, bytes or os.PathLike, as the file system names it: os.fsencode's bytes,
// so that a str holding surrogate escapes (os.listdir's names that are not UTF-8) names the file.
std::filesystem::path file_path(const py::object& given) {
  const py::object encoded = py::module_::import("os").attr("fsencode")(given);
  return std::filesystem::path(std::string(py::bytes(encoded)));
}

MergeReport merge_paths(const std::filesystem::path& sheet, const std::filesystem::path& xml,
                        const std::filesystem::path& output, std::optional<py::function> progress,
                        std::optional<bool> recover, bool classic,
                        std::optional<std::string> worksheet) {
  std::optional<ProgressCallback> callback;
  Host host;
  host.rules = chosen_rules(classic, recover);
  host.worksheet = std::move(worksheet);
  if (progress) {
    callback.emplace(std::move(*progress));
    host.progress = [&callback](const ProgressReport& report) { callback->report(report); };
    host.cancel_requested = [&callback] { return callback->cancelled(); };
  }
  MergeReport report;
  {
    py::gil_scoped_release release;
    report = add_log_notes(sheet.string(), xml.string(), output.string(), host);
  }
  if (callback) callback->rethrow_raised();
  if (report.outcome == Outcome::not_a_log_sheet) raise_not_a_log_sheet(sheet);
  return report;
}

MergeReport merge(const py::object& sheet, const py::object& xml, const py::object& output,
                  std::optional<py::function> progress, std::optional<bool> recover, bool classic,
                  std::optional<std::string> worksheet) {
  return merge_paths(file_path(sheet), file_path(xml), file_path(output), std::move(progress),
                     recover, classic, std::move(worksheet));
}

// An input that cannot be read raises OSError, as it does for merge; any other failure of the
// merge is part of the report (CheckReport::error and a merge_fails finding).
CheckReport check_paths(const std::filesystem::path& sheet, const std::filesystem::path& xml,
                        bool changes, std::optional<bool> recover, bool classic,
                        const std::optional<std::string>& worksheet) {
  CheckReport report;
  {
    py::gil_scoped_release release;
    report = pellago::check(
        sheet.string(), xml.string(),
        CheckOptions{
            .changes = changes, .rules = chosen_rules(classic, recover), .worksheet = worksheet});
  }
  if (report.error && report.system_error != 0) throw Error(*report.error, report.system_error);
  if (report.merge.outcome == Outcome::not_a_log_sheet) raise_not_a_log_sheet(sheet);
  return report;
}

CheckReport check_sheet(const py::object& sheet, const py::object& xml, bool changes,
                        std::optional<bool> recover, bool classic,
                        const std::optional<std::string>& worksheet) {
  return check_paths(file_path(sheet), file_path(xml), changes, recover, classic, worksheet);
}

// Every enumerator of one of the library's tables, under its name there.
template <typename Enum, std::size_t size>
void add_named_values(py::enum_<Enum>& type, const std::array<NamedValue<Enum>, size>& table) {
  for (const auto& [value, name] : table) type.value(std::string(name).c_str(), value);
}

// One data row of a sheet, as Python sees it.
struct PySheetRow {
  int number = 0;    // the row number in the worksheet
  py::dict fields;   // ordinary column header -> cell text
  py::list markers;  // of MarkerEntry
};

// Python lists, made once, so that indexing them does not convert the whole sheet again.
struct Sheet {
  py::list headers;  // row 1: str, float, bool, a datetime value or None per column
  py::list rows;     // of SheetRow
};

// A datetime.date, datetime.datetime (UTC) or datetime.time. The 1900 date system's 1900-02-29,
// which no calendar has, stays its text.
py::object date_value(const DateTime& date) {
  if (date.year == 1900 && date.month == 2 && date.day == 29) return py::str(date_time_text(date));
  const py::module_ datetime = py::module_::import("datetime");
  if (date.kind == DateKind::time) {
    return datetime.attr("time")(date.hour, date.minute, date.second);
  }
  if (date.kind == DateKind::date) return datetime.attr("date")(date.year, date.month, date.day);
  return datetime.attr("datetime")(date.year, date.month, date.day, date.hour, date.minute,
                                   date.second, 0, datetime.attr("timezone").attr("utc"));
}

py::object header_value(const Cell& header) {
  if (const auto* text = std::get_if<std::string>(&header)) return py::str(*text);
  if (const auto* number = std::get_if<double>(&header)) return py::float_(*number);
  if (const auto* truth = std::get_if<bool>(&header)) return py::bool_(*truth);
  if (const auto* date = std::get_if<DateTime>(&header)) return date_value(*date);
  return py::none();
}

Sheet sheet_for_python(const LogSheet& log_sheet) {
  Sheet sheet;
  for (const Cell& header : log_sheet.headers) sheet.headers.append(header_value(header));
  for (const LogRow& row : log_sheet.rows) {
    PySheetRow entry{.number = row.sheet_row, .fields = py::dict(), .markers = py::list()};
    for (std::size_t i = 0; i < row.headers->size(); ++i) {
      entry.fields[py::str((*row.headers)[i])] = py::str(row.value(i));
    }
    for (const MarkerEntry& marker : row.markers) entry.markers.append(py::cast(marker));
    sheet.rows.append(py::cast(std::move(entry)));
  }
  return sheet;
}

// to_frames for Python: a rate or a timecode it cannot use raises ValueError, where the engine
// reads any text as some frame.
std::int64_t frames_of(const std::string& timecode, double rate,
                       const std::string& display_format) {
  if (!std::isfinite(rate) || rate <= 0) {
    throw py::value_error(fmt::format("{} is no frame rate: a rate is a number above 0", rate));
  }
  if (!is_timecode(timecode, std::llround(rate))) {
    throw py::value_error(fmt::format(
        "\"{}\" is not a timecode at {} frames per second: hours:minutes:seconds:frames, or a "
        "number",
        timecode, rate));
  }
  return to_frames(timecode, rate, display_format);
}

Sheet inspect_path(const std::filesystem::path& path, const std::optional<std::string>& worksheet) {
  std::optional<LogSheet> log_sheet;
  {
    py::gil_scoped_release release;
    log_sheet = read_log_sheet(path.string(), worksheet);
  }
  if (!log_sheet) raise_not_a_log_sheet(path);
  return sheet_for_python(*log_sheet);
}

Sheet inspect(const py::object& sheet, const std::optional<std::string>& worksheet) {
  return inspect_path(file_path(sheet), worksheet);
}

std::string optional_repr(const std::optional<std::string>& text) {
  return text ? py::repr(py::str(*text)).cast<std::string>() : "None";
}

std::string repr(const RecoveredErrors& recovered) {
  if (recovered.count == 0) return "RecoveredErrors(count=0)";
  return py::str("RecoveredErrors(count={}, line={}, column={}, message={!r})")
      .format(recovered.count, recovered.line, recovered.column, recovered.message)
      .cast<std::string>();
}

std::string repr(const MergeReport& report) {
  return py::str(
             "MergeReport(outcome={}, clips_visited={}, clips_changed={}, subclips_made={}, "
             "markers_added={}, rows_unmatched={}, recovered={})")
      .format(py::cast(report.outcome), report.clips_visited, report.clips_changed,
              report.subclips_made, report.markers_added, report.rows_unmatched,
              repr(report.recovered))
      .cast<std::string>();
}

std::string repr(const Finding& finding) {
  return py::str("Finding(kind={}, severity={}, row={!r}, column={!r}, clip={!r}, message={!r})")
      .format(py::cast(finding.kind), py::cast(finding.severity), py::cast(finding.row),
              py::cast(finding.column), py::cast(finding.clip), finding.message)
      .cast<std::string>();
}

std::string repr(const CheckReport& report) {
  return py::str("CheckReport(merge={}, findings=<{} findings>, changes=<{} changes>, error={})")
      .format(repr(report.merge), report.findings.size(), report.changes.size(),
              optional_repr(report.error))
      .cast<std::string>();
}

std::string repr(const MarkerEntry& marker) {
  return py::str("Marker(timecode={}, name={}, comment={}, color={})")
      .format(py::repr(py::str(marker.timecode)), optional_repr(marker.name),
              optional_repr(marker.comment), optional_repr(marker.color))
      .cast<std::string>();
}

std::string repr(const PySheetRow& row) {
  return py::str("SheetRow(number={}, fields={!r}, markers={!r})")
      .format(row.number, row.fields, row.markers)
      .cast<std::string>();
}

std::string repr(const Sheet& sheet) {
  return py::str("Sheet(headers={!r}, rows=<{} rows>)")
      .format(sheet.headers, sheet.rows.size())
      .cast<std::string>();
}

constexpr const char* kModuleDoc =
    R"(Merges the log notes of an Excel log sheet (.xls or .xlsx) into a Final Cut Pro XML
document, as the pellago program does.

merge() runs a whole merge, check() runs it in memory and reports what in the sheet looks wrong,
inspect() shows a log sheet as the merge reads it and to_frames() converts a timecode. Paths may be str or os.PathLike. A file that cannot be read or written
raises OSError (FileNotFoundError, PermissionError...), any other failure pellago.Error, and
running out of memory MemoryError; a failed merge writes nothing. The GIL is released while the
engine works, so other Python threads run meanwhile.)";

constexpr const char* kMergeDoc =
    R"(Merges the log sheet `sheet` into the Final Cut Pro XML document `xml` and writes the result to
`output`, which may be `xml` itself: it is replaced only once the whole merge has succeeded.
"-" writes to standard output. An output that exists and is not a regular file, or is the sheet,
is refused before anything is read.

A sheet whose name does not end in ".xls" or ".xlsx" (in any letter case; in lower case with
classic=True) is not a log sheet: nothing is read or written, and pellago.NotALogSheet (a
pellago.Error) is raised.

progress, when given, is called as progress(done, total) with the number of clips visited and
the number of clips in the document: once with done == 0, then after every clip. A progress that
takes a third argument is called as progress(done, total, phase) with the MergePhase, and also
as each other phase begins (reading_sheet, reading_xml, writing), with done and total 0. Returning False
cancels the merge before its next clip: nothing is written and the outcome is Outcome.cancelled.
An exception raised by progress cancels it too, and is raised again by merge once the merge has
stopped.

The worksheet read is the first with a Name header among its first 20 rows (the first worksheet
with classic=True); worksheet="Log" reads the one whose tab shows that name, and raises
pellago.Error naming the workbook's worksheets when there is none.

A document that is not well-formed XML raises pellago.Error naming its first error's line and
column. With recover=True it is merged as far as the parser could recover it: the report's
`recovered` says how many errors were repaired and where the first was (clips after it may be
missing from the output). classic=True recovers unless recover=False.

Raises OSError when a file cannot be read or written and pellago.Error when the sheet or the
document cannot be merged; the message names the file, or the clip and sheet row.)";

constexpr const char* kCheckDoc =
    R"(Runs the whole merge of the log sheet `sheet` into the document `xml` in memory, writing
nothing, and returns a CheckReport: what the merge would report, the findings about the sheet
(rows whose Name matches no clip, headers close to ones the merge reads, values it would ignore
or refuse...) and, with changes=True, every change the merge would make to the document.

A merge that would fail gives its message in the report's `error` and a finding of kind
FindingKind.merge_fails, after the findings made before it. worksheet= chooses the worksheet as
for merge. A sheet whose name does not end in
".xls" or ".xlsx" raises pellago.NotALogSheet. Raises OSError when a file cannot be read.)";

constexpr const char* kInspectDoc =
    R"(Reads the log sheet `sheet` as the merge reads it by default: the first worksheet with a Name
header among its first 20 rows (or the one worksheet= names), the header row as it is (the first of the first 20 rows with a Name header) and one SheetRow per row below it
to the last, blank rows included. Raises pellago.NotALogSheet when `sheet` is not a log sheet
(its name does not end in ".xls" or ".xlsx"), OSError when the file cannot be read and
pellago.Error when it is not a readable workbook.)";

constexpr const char* kToFramesDoc =
    R"(The frame count of a timecode as written in a log sheet ("01:00:00;00", "01.00.00.12",
"1000012.0", "250") at `rate` frames per second, rounded to a whole number. display_format "DF"
counts drop frames; any other text counts every frame. Raises ValueError for a rate that is not a
number above 0 and for a text that is not a timecode at that rate ("TBD", "01:00:00:30" at 25).)";

}  // namespace

}  // namespace pellago::python

PYBIND11_MODULE(pellago, module) {
  using namespace pellago;
  using namespace pellago::python;

  module.doc() = kModuleDoc;
  module.attr("__version__") = kVersion;

  error_type = PyErr_NewExceptionWithDoc(
      "pellago.Error",
      "A log sheet or document that cannot be merged; the message says which file, clip or row "
      "and what is missing. row (the sheet row, 2 for the first data row), column (a Column) and "
      "clip (a ClipRef) say where, or are None when that is not known.",
      PyExc_ValueError, nullptr);
  if (error_type == nullptr) throw py::error_already_set();
  module.add_object("Error", py::handle(error_type));
  not_a_log_sheet_type = PyErr_NewExceptionWithDoc(
      "pellago.NotALogSheet",
      "A sheet path whose extension is not .xls or .xlsx (in lower case, under the classic rules): "
      "nothing was read or written.",
      error_type, nullptr);
  if (not_a_log_sheet_type == nullptr) throw py::error_already_set();
  module.add_object("NotALogSheet", py::handle(not_a_log_sheet_type));
  for (const char* where : {"row", "column", "clip"}) {
    py::handle(error_type).attr(where) = py::none();
  }
  py::register_exception_translator(translate_engine_error);

  py::enum_<Outcome>(module, "Outcome", "How a merge ended.")
      .value("merged", Outcome::merged, "The output was written.")
      .value("not_a_log_sheet", Outcome::not_a_log_sheet,
             "The sheet is not an .xls or .xlsx file; nothing was read or written.")
      .value("cancelled", Outcome::cancelled, "The progress callback cancelled; nothing written.");

  py::enum_<MergePhase>(module, "MergePhase",
                        "The stages of a merge, in the order it goes through.")
      .value("reading_sheet", MergePhase::reading_sheet)
      .value("reading_xml", MergePhase::reading_xml)
      .value("merging_clips", MergePhase::merging_clips)
      .value("writing", MergePhase::writing);

  py::class_<RecoveredErrors>(module, "RecoveredErrors",
                              "What the XML parser repaired in a document that is not well-formed.")
      .def_readonly("count", &RecoveredErrors::count, "Errors repaired; 0 for a sound document.")
      .def_readonly("line", &RecoveredErrors::line,
                    "The first error's line (from 1; 0 when the parser did not say).")
      .def_readonly("column", &RecoveredErrors::column, "The first error's column (from 1, or 0).")
      .def_readonly("message", &RecoveredErrors::message, "The first error's message.")
      .def("__repr__", [](const RecoveredErrors& recovered) { return repr(recovered); });

  py::class_<MergeReport>(module, "MergeReport", "What a merge did.")
      .def_readonly("outcome", &MergeReport::outcome)
      .def_readonly("clips_visited", &MergeReport::clips_visited, "Clips of the document visited.")
      .def_readonly("clips_changed", &MergeReport::clips_changed,
                    "Clips that at least one sheet row was applied to.")
      .def_readonly("subclips_made", &MergeReport::subclips_made,
                    "Subclip copies made for further rows naming one clip.")
      .def_readonly("markers_added", &MergeReport::markers_added, "Markers added.")
      .def_readonly("rows_unmatched", &MergeReport::rows_unmatched,
                    "Data rows, blank rows not counted, whose Name matched no clip.")
      .def_readonly("rows_not_fully_applied", &MergeReport::rows_not_fully_applied,
                    "Row applications that left out a value the clip cannot take (a marker "
                    "outside its media, a timecode that is none).")
      .def_readonly("clip_items_logged", &MergeReport::clip_items_logged,
                    "Clip items of sequences logged by rows that named no master clip.")
      .def_readonly("recovered", &MergeReport::recovered,
                    "What the parser repaired; when its count is not 0 the clips after the first "
                    "error may be missing from the merge and the output.")
      .def("__repr__", [](const MergeReport& report) { return repr(report); });

  py::enum_<FindingKind> finding_kind(module, "FindingKind", "What a check found.");
  add_named_values(finding_kind, kFindingKinds);
  py::enum_<Severity> severity(module, "Severity",
                               "note: often meant; warning: the sheet probably does not say what "
                               "was meant; error: the merge would fail.");
  add_named_values(severity, kSeverities);
  py::enum_<ChangeKind> change_kind(module, "ChangeKind", "What a change does to the document.");
  add_named_values(change_kind, kChangeKinds);

  py::class_<Column>(module, "Column", "A column of the sheet, as a spreadsheet shows it.")
      .def_readonly("header", &Column::header, "The header text of row 1.")
      .def_readonly("letter", &Column::letter, "\"A\", \"B\", ... \"AA\".")
      .def("__repr__", [](const Column& column) {
        return py::str("Column(header={!r}, letter={!r})")
            .format(column.header, column.letter)
            .cast<std::string>();
      });

  py::class_<ClipRef>(module, "ClipRef", "A clip of the document.")
      .def_readonly("name", &ClipRef::name)
      .def_readonly("id", &ClipRef::id, "None when the clip has no id attribute.")
      .def("__repr__", [](const ClipRef& clip) {
        return py::str("ClipRef(name={!r}, id={})")
            .format(clip.name, optional_repr(clip.id))
            .cast<std::string>();
      });

  py::class_<Finding>(module, "Finding", "Something in the sheet that a check found.")
      .def_readonly("kind", &Finding::kind)
      .def_readonly("severity", &Finding::severity)
      .def_readonly("row", &Finding::row,
                    "The sheet row as the spreadsheet numbers it (2: the first data row), or "
                    "None.")
      .def_readonly("column", &Finding::column, "None for a finding about a whole row or clip.")
      .def_readonly("clip", &Finding::clip, "The clip concerned, or None.")
      .def_readonly("message", &Finding::message, "One sentence, for people.")
      .def_readonly("suggestion", &Finding::suggestion,
                    "What to change; empty when there is nothing to suggest.")
      .def("__repr__", [](const Finding& finding) { return repr(finding); });

  py::class_<Change>(module, "Change", "One difference a merge makes to the document.")
      .def_readonly("kind", &Change::kind)
      .def_readonly("row", &Change::row, "The sheet row that causes it; None for document-wide.")
      .def_readonly("clip", &Change::clip,
                    "The clip the element belongs to (the copy's, for a copy).")
      .def_readonly(
          "element", &Change::element,
          "Path from the clip (\"logginginfo/scene\", \"media/video/track/clipitem/@id\"), "
          "or from the root element outside every clip; \"clip\" for subclip_made.")
      .def_readonly("old_text", &Change::old_text, "None for added and subclip_made.")
      .def_readonly("new_text", &Change::new_text, "None for removed.")
      .def_readonly("content", &Change::content,
                    "added, removed, subclip_made: (path below the element, text) of every leaf "
                    "element in document order; the path is empty for the element itself.");

  py::class_<CheckReport>(module, "CheckReport", "What a check found.")
      .def_readonly("merge", &CheckReport::merge,
                    "What the merge would report; Outcome.not_a_log_sheet stops the check.")
      .def_readonly("findings", &CheckReport::findings,
                    "Header findings, then the findings of each row in sheet order.")
      .def_readonly("changes", &CheckReport::changes,
                    "In the order the merge makes them; empty unless asked for.")
      .def_readonly("error", &CheckReport::error, "The message the merge would fail with, or None.")
      .def("__repr__", [](const CheckReport& report) { return repr(report); });

  py::class_<MarkerEntry>(module, "Marker", "A marker of a sheet row.")
      .def_readonly("timecode", &MarkerEntry::timecode, "Never empty.")
      .def_readonly("name", &MarkerEntry::name, "None when the sheet has no such column.")
      .def_readonly("comment", &MarkerEntry::comment, "None when the sheet has no such column.")
      .def_readonly("color", &MarkerEntry::color, "Lower-cased; None without the column.")
      .def("__repr__", [](const MarkerEntry& marker) { return repr(marker); });

  py::class_<PySheetRow>(module, "SheetRow", "A data row of a log sheet.")
      .def_readonly("number", &PySheetRow::number, "The row number in the worksheet (from 2).")
      .def_readonly("fields", &PySheetRow::fields,
                    "Ordinary column header -> cell text (numbers as \"12.0\"); with duplicate "
                    "headers the right-hand column.")
      .def_readonly("markers", &PySheetRow::markers,
                    "One Marker per marker column group whose timecode cell is not empty.")
      .def("__repr__", [](const PySheetRow& row) { return repr(row); });

  py::class_<Sheet>(module, "Sheet", "A log sheet as the merge reads it.")
      .def_readonly("headers", &Sheet::headers, "Row 1 as it is: str, float or None per column.")
      .def_readonly("rows", &Sheet::rows, "The rows from 2 to the last, blank rows included.")
      .def("__repr__", [](const Sheet& sheet) { return repr(sheet); });

  module.def("merge", &merge, kMergeDoc, "sheet"_a, "xml"_a, "output"_a, py::kw_only(),
             "progress"_a = py::none(), "recover"_a = py::none(), "classic"_a = false,
             "worksheet"_a = py::none());
  module.def("check", &check_sheet, kCheckDoc, "sheet"_a, "xml"_a, py::kw_only(),
             "changes"_a = false, "recover"_a = py::none(), "classic"_a = false,
             "worksheet"_a = py::none());
  module.def("inspect", &inspect, kInspectDoc, "sheet"_a, py::kw_only(),
             "worksheet"_a = py::none());
  module.def("to_frames", &frames_of, kToFramesDoc, "timecode"_a, "rate"_a, "display_format"_a);
}
