#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.hpp"
#include "cli/progress_bar.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/markers.hpp"
#include "merge/messages.hpp"
#include "merge/output_file.hpp"
#include "sheet/columns.hpp"

namespace pellago::cli {

namespace {

constexpr const char* kDescription =
    R"(Merges the log notes of SHEET into the Final Cut Pro XML document XML and
writes the merged document to OUTPUT, for Final Cut Pro to import back.

SHEET is an Excel workbook ending in .xls or .xlsx (lower case). Its first
worksheet is read: row 1 holds the column headers, every row below logs one
clip. A row belongs to each clip whose <name> equals its "Name" cell exactly
(case and spaces count; a number cell reads as 101.0, not 101). Headers are
matched exactly too; other columns are ignored. The columns read:

)";

// After the columns read.
constexpr const char* kDescriptionEnd =
    R"(
An empty cell clears the field it stands for (Good becomes FALSE).
Timecodes may be written 01:00:10:00, 01;00;10;00 or 01.00.10.00, or typed
as the number 1001000 (HHMMSSFF) in a number cell; text without separators is
a frame count. A clip whose display format is DF counts in drop frames.

Clips are counted from 0 in document order; a clip is rewritten in full only
while its count is below the number of data rows of the sheet (a clip further
down only gets its In/Out clearing and subclip copies).

Every <updatebehavior> of the document becomes "replaceoradd". OUTPUT may be
XML itself; it is replaced only once the whole merge has succeeded, and is
left as it was on any error. OUTPUT - writes to standard output (the summary
then goes to standard error). An OUTPUT that exists and is not a regular file
(a device, a FIFO), or that is SHEET itself, is refused.

An XML document that is not well-formed is refused, naming the first error's
line and column. --recover merges it as far as it can be read: a warning names
the line, and clips after it may be missing (--classic does so too, unless
--strict).

A text that XML 1.0 cannot hold (a control character, U+FFFE, U+FFFF) ends
the merge with an error naming the sheet row, the column and the character.
)";

constexpr const char* kFooter =
    R"(A progress line shows on a terminal; a one-line summary ends the run: clips
visited and changed, the subclips made, markers added, sheet rows that matched
no clip.

Exit status: 0 merged; 1 error (the message says which clip and sheet row,
and nothing is written); 2 wrong usage; 3 SHEET does not end in .xls or .xlsx.

Examples:
  pellago merge day1.xlsx day1.xml day1_logged.xml
      merges the notes of day1.xlsx into the export day1.xml and writes the
      result to day1_logged.xml, for Final Cut Pro to import
  pellago merge -q "Log Sheet.xls" project.xml project.xml
      merges into project.xml itself, replacing it only when the merge
      succeeded, and shows no progress line)";

struct MergeOptions {
  std::string sheet;
  std::string xml;
  std::string output;
  bool quiet = false;
  RulesFlags rules;
};

// One line per column of the sheet: its header and what it does.
std::string columns_help() {
  std::string text;
  for (const SheetColumn& column : kSheetColumns) {
    std::string summary(column.summary);
    if (column.role == ColumnRole::marker_color) {
      summary += fmt::format("; colours: {}", fmt::join(marker_color_names(), ", "));
    }
    text += fmt::format("  {:<20}  {}\n", column.header, summary);
  }
  return text;
}

// The summary names each subclip while there are at most this many.
constexpr std::size_t kNamedSubclips = 6;

// "; A001 became 2 subclips: "Intro", "Wide"" while they are few, "; cut 4 clips into 12 subclips"
// when they are more; nothing when no clip was cut.
std::string cut_clips_text(const std::vector<CutClip>& cut_clips) {
  std::size_t subclips = 0;
  for (const CutClip& cut : cut_clips) subclips += cut.subclips.size();
  if (subclips > kNamedSubclips) {
    return fmt::format("; cut {} into {}", counted(cut_clips.size(), "clip"),
                       counted(subclips, "subclip"));
  }
  std::string text;
  for (const CutClip& cut : cut_clips) {
    text += fmt::format("; {} {} {}: \"{}\"", cut.name, cut.kept_whole ? "gave" : "became",
                        counted(cut.subclips.size(), "subclip"), fmt::join(cut.subclips, "\", \""));
  }
  return text;
}

std::string summary(const MergeReport& report, const MergeOptions& options) {
  std::string text = fmt::format(
      "visited {}, changed {}{}{}; added {}; {} matched no clip{}; wrote {}",
      counted(report.clips_visited, "clip"), report.clips_changed, cut_clips_text(report.cut_clips),
      report.clip_items_logged == 0
          ? std::string()
          : fmt::format("; logged {} in sequences", counted(report.clip_items_logged, "clip item")),
      counted(report.markers_added, "marker"), counted(report.rows_unmatched, "sheet row"),
      report.rows_not_fully_applied == 0
          ? std::string()
          : fmt::format(", {} not fully applied (a value left out)",
                        counted(report.rows_not_fully_applied, "row")),
      options.output == kStandardOutput ? "standard output" : options.output);
  if (report.recovered.count > 0) {
    text += fmt::format("; clips after line {} of {} may be missing", report.recovered.line,
                        options.xml);
  }
  if (report.rows_unmatched > 0 || report.rows_not_fully_applied > 0) {
    text += "; run 'pellago check' to see why";
  }
  return text;
}

void warn_recovered(const RecoveredErrors& errors, const std::string& xml) {
  if (errors.count == 0) return;
  std::fputs(fmt::format("pellago: warning: {}\n", recovered_warning(errors, xml)).c_str(), stderr);
}

int run_merge(const MergeOptions& options) {
  std::optional<ProgressBar> bar;
  Host host;
  host.keep_document_until_exit = true;
  host.rules = options.rules.rules();
  host.worksheet = options.rules.worksheet;
  if (!options.quiet && isatty(STDERR_FILENO)) bar.emplace().attach_to(host);

  const MergeReport report = add_log_notes(options.sheet, options.xml, options.output, host);
  if (bar) bar->clear();
  if (report.outcome == Outcome::not_a_log_sheet) {
    std::fputs(fmt::format("pellago: {}\n", not_a_log_sheet_message(options.sheet)).c_str(),
               stderr);
    return kExitNotALogSheet;
  }
  warn_recovered(report.recovered, options.xml);
  // The document itself may be going to standard output: the summary then goes to stderr.
  std::fputs(fmt::format("{}\n", summary(report, options)).c_str(),
             options.output == kStandardOutput ? stderr : stdout);
  return kExitOk;
}

}  // namespace

void add_merge_command(CLI::App& app, int& status) {
  auto options = std::make_shared<MergeOptions>();
  CLI::App* merge = app.add_subcommand("merge", "Merge a log sheet into a Final Cut Pro XML file");
  // The description is the one-line summary in the program's help; the rest follows the options.
  merge->footer(fmt::format("{}{}{}\n{}", kDescription, columns_help(), kDescriptionEnd, kFooter));
  merge->add_option("SHEET", options->sheet, "The log sheet (.xls or .xlsx)")->required();
  merge->add_option("XML", options->xml, "The Final Cut Pro XML document to merge into")
      ->required();
  merge->add_option("OUTPUT", options->output, "Where to write the merged document")->required();
  merge->add_flag("-q,--quiet", options->quiet, "Show no progress line");
  add_rules_flags(*merge, options->rules);
  merge->callback([options, &status] { status = run_merge(*options); });
}

}  // namespace pellago::cli
