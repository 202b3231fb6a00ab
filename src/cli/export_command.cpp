#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "error.hpp"
#include "export/export_sheet.hpp"

namespace pellago::cli {

namespace {

constexpr const char* kDescription =
    R"text(Writes a log sheet for the clips of the Final Cut Pro XML document XML, ready
to fill in and merge back with 'pellago merge'. Each distinct clip name gets
one row holding what the clip holds now: In and Out as timecodes in the clip's
own rate and display format (empty where unset), Good as yes, the logging
texts as they stand. Markers and auxiliary timecodes the clips hold already go
into "(in project)" columns that the merge ignores. Every column is formatted
as text.

Merging the sheet as written changes nothing but the update behaviours. So a
column is left out when some clip lacks the element it writes (the merge would
add the element, or fail), and a clip name is left out when the merge could
not log that clip (no rate or duration); both are listed.

LOG_SHEET must end in .xlsx. An existing LOG_SHEET is replaced only with
--force, through a temporary file and a rename in its folder; a LOG_SHEET that
is not a regular file (a folder, a device, a FIFO) is refused.
)text";

struct ExportOptions {
  std::string xml;
  std::string sheet;
  bool force = false;
};

void warn_recovered(const RecoveredErrors& errors, const std::string& xml) {
  if (errors.count == 0) return;
  std::fputs(fmt::format("pellago: warning: {} is not well-formed XML: line {}, column {}: {}; "
                         "clips after that line may be missing from the sheet\n",
                         xml, errors.line, errors.column, errors.message)
                 .c_str(),
             stderr);
}

int run_export(const ExportOptions& options) {
  // A file size limit must make write() fail (and the export with it), not kill the process.
  std::signal(SIGXFSZ, SIG_IGN);
  ExportReport report;
  try {
    report = export_log_sheet(options.xml, options.sheet,
                              options.force ? ExistingSheet::replace : ExistingSheet::refuse);
  } catch (const Error& error) {
    if (error.system_error != EEXIST) throw;
    throw Error(fmt::format("{}; --force replaces it", error.what()), error.system_error);
  }
  warn_recovered(report.recovered, options.xml);
  for (const ColumnLeftOut& column : report.columns_left_out) {
    std::fputs(fmt::format("left out column \"{}\": clip {} has no {} element\n", column.header,
                           column.clip, column.element)
                   .c_str(),
               stdout);
  }
  for (const NameLeftOut& name : report.names_left_out) {
    std::fputs(fmt::format("left out clip {}: {}\n", name.name, name.reason).c_str(), stdout);
  }
  std::string named = counted(report.clips, "clip");
  if (report.clip_items > 0) {
    named = report.clips == 0
                ? counted(report.clip_items, "clip item")
                : fmt::format("{} and {}", named, counted(report.clip_items, "clip item"));
  }
  std::fputs(
      fmt::format("wrote {} for {} to {}\n", counted(report.rows, "row"), named, options.sheet)
          .c_str(),
      stdout);
  return kExitOk;
}

}  // namespace

void add_export_command(CLI::App& app, int& status) {
  auto options = std::make_shared<ExportOptions>();
  CLI::App* command = app.add_subcommand(
      "export", "Write a log sheet listing the clips of a Final Cut Pro XML file");
  command->footer(kDescription);
  command->add_option("XML", options->xml, "The Final Cut Pro XML document")->required();
  command->add_option("LOG_SHEET", options->sheet, "The log sheet to write (.xlsx)")->required();
  command->add_flag("-f,--force", options->force, "Replace LOG_SHEET when it exists");
  command->callback([options, &status] { status = run_export(*options); });
}

}  // namespace pellago::cli
