#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "check/check.hpp"
#include "cli/commands.hpp"
#include "merge/messages.hpp"

namespace pellago::cli {

namespace {

using Json = nlohmann::ordered_json;

// Findings exist: the merge would run, but the sheet probably does not say what was meant.
constexpr int kExitFindings = 4;

constexpr const char* kFooter =
    R"(Runs the whole merge of SHEET into XML in memory and writes nothing. Prints one
line per finding: the sheet row (as the spreadsheet numbers it), the column, the
clip, what looks wrong and what to write instead. Findings: a Name that matches
no clip (with the clip it would match if blanks, letter case, Unicode
normalisation or a number's ".0" were set aside, or the closest names); a header
the merge does not read that is close to one it does, and marker-like headers it
ignores; a Good cell that looks like yes but reads FALSE; a marker colour
outside the table; In, Out, marker and aux texts that are not timecodes, markers
and In/Out outside the clip's media, Out before In; clips further down the
document than the sheet has rows; names several clips share; rows that repeat a
name (they become subclips, a note); markers a clip already has and rows naming
a clip or subclip of an earlier merge (a sheet merged again into its output);
three-field timecodes meant as hours, times of day, timecodes without digits;
number cells in text columns (12 written as 12.0); In and Out on a clip's only
row that would change it; a lower-case display format or NTSC word in the clip;
an XML document that is not well-formed (the first error's line and column:
clips after it may be missing).

--changes also lists every change the merge would make to the document: element
texts (old and new), elements added and removed, subclip copies made.
--json prints one JSON document instead (its shape is in the README).

Exit status: 0 no findings, or notes only; 4 a warning; 1 the merge would fail
or an input cannot be read (the error as 'pellago merge' words it, on standard
error; a failure at a sheet row, column or clip is also listed as a finding
there); 2 wrong usage; 3 SHEET does not end in .xls or .xlsx.)";

struct CheckArguments {
  std::string sheet;
  std::string xml;
  bool json = false;
  bool changes = false;
  RulesFlags rules;
};

std::string clip_text(const ClipRef& clip) {
  return clip.id ? fmt::format("clip \"{}\" (id {})", clip.name, *clip.id)
                 : fmt::format("clip \"{}\"", clip.name);
}

std::string finding_line(const Finding& finding) {
  std::vector<std::string> where;
  if (finding.row) where.push_back(fmt::format("row {}", *finding.row));
  if (finding.column) {
    where.push_back(
        fmt::format("column {} \"{}\"", finding.column->letter, finding.column->header));
  }
  if (finding.clip) where.push_back(clip_text(*finding.clip));
  if (where.empty())
    where.emplace_back(finding.kind == FindingKind::recovered_xml ? "document" : "sheet");
  std::string line = fmt::format("{}", fmt::join(where, ", "));
  line += fmt::format(": {}: {}", severity_name(finding.severity), finding.message);
  if (!finding.suggestion.empty()) line += fmt::format(" ({})", finding.suggestion);
  return line;
}

// The merge's failure is listed among the findings only when it names where in the sheet or the
// document it arose: its message goes to standard error in any case.
bool is_listed(const Finding& finding) {
  return finding.kind != FindingKind::merge_fails || finding.row || finding.column || finding.clip;
}

std::string leaves_text(const std::vector<std::pair<std::string, std::string>>& content) {
  if (content.size() == 1 && content.front().first.empty()) {
    return fmt::format(" \"{}\"", content.front().second);
  }
  std::vector<std::string> parts;
  for (const auto& [path, text] : content) parts.push_back(fmt::format("{} \"{}\"", path, text));
  return fmt::format(" ({})", fmt::join(parts, ", "));
}

std::string change_line(const Change& change) {
  std::string where = change.row ? fmt::format("row {}", *change.row) : std::string("document");
  if (change.clip) where += ", " + clip_text(*change.clip);
  switch (change.kind) {
    case ChangeKind::text_set:
    case ChangeKind::attribute_set:
      return fmt::format("{}: {}: \"{}\" -> \"{}\"", where, change.element,
                         change.old_text.value_or(""), change.new_text.value_or(""));
    case ChangeKind::added:
      return fmt::format("{}: added {}{}", where, change.element, leaves_text(change.content));
    case ChangeKind::removed:
      return fmt::format("{}: removed {}{}", where, change.element, leaves_text(change.content));
    case ChangeKind::subclip_made:
      return fmt::format("{}: made a copy of the clip for the row's subclip", where);
  }
  return where;
}

std::string summary_line(const CheckReport& report) {
  const MergeReport& merge = report.merge;
  return fmt::format(
      "{}; a merge would visit {} ({} changed, {} made, {} added); {} matched no clip",
      counted(report.findings.size(), "finding"), counted(merge.clips_visited, "clip"),
      merge.clips_changed, counted(merge.subclips_made, "subclip"),
      counted(merge.markers_added, "marker"), counted(merge.rows_unmatched, "sheet row"));
}

Json optional_json(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json(nullptr);
}

Json clip_json(const std::optional<ClipRef>& clip) {
  if (!clip) return nullptr;
  return {{"name", clip->name}, {"id", optional_json(clip->id)}};
}

Json finding_json(const Finding& finding) {
  Json column = nullptr;
  if (finding.column) {
    column = {{"header", finding.column->header}, {"letter", finding.column->letter}};
  }
  return {{"kind", kind_name(finding.kind)},
          {"severity", severity_name(finding.severity)},
          {"row", finding.row ? Json(*finding.row) : Json(nullptr)},
          {"column", std::move(column)},
          {"clip", clip_json(finding.clip)},
          {"message", finding.message},
          {"suggestion", finding.suggestion.empty() ? Json(nullptr) : Json(finding.suggestion)}};
}

Json change_json(const Change& change) {
  Json content = Json::array();
  for (const auto& [path, text] : change.content) {
    content.push_back({{"element", path}, {"text", text}});
  }
  return {{"kind", change_kind_name(change.kind)},
          {"row", change.row ? Json(*change.row) : Json(nullptr)},
          {"clip", clip_json(change.clip)},
          {"element", change.element},
          {"old", optional_json(change.old_text)},
          {"new", optional_json(change.new_text)},
          {"content", std::move(content)}};
}

Json report_json(const CheckReport& report, bool with_changes) {
  Json findings = Json::array();
  for (const Finding& finding : report.findings) findings.push_back(finding_json(finding));
  const MergeReport& merge = report.merge;
  Json json{{"error", optional_json(report.error)},
            {"summary",
             {{"clips_visited", merge.clips_visited},
              {"clips_changed", merge.clips_changed},
              {"subclips_made", merge.subclips_made},
              {"markers_added", merge.markers_added},
              {"rows_unmatched", merge.rows_unmatched}}},
            {"findings", std::move(findings)}};
  if (with_changes) {
    Json changes = Json::array();
    for (const Change& change : report.changes) changes.push_back(change_json(change));
    json["changes"] = std::move(changes);
  }
  return json;
}

void print(const std::string& text, std::FILE* stream) { std::fputs(text.c_str(), stream); }

int run_check(const CheckArguments& arguments) {
  const CheckReport report = check(arguments.sheet, arguments.xml,
                                   CheckOptions{.changes = arguments.changes,
                                                .rules = arguments.rules.rules(),
                                                .worksheet = arguments.rules.worksheet});
  if (report.merge.outcome == Outcome::not_a_log_sheet) {
    print(fmt::format("pellago: {}\n", not_a_log_sheet_message(arguments.sheet)), stderr);
    return kExitNotALogSheet;
  }
  if (arguments.json) {
    print(
        report_json(report, arguments.changes).dump(2, ' ', false, Json::error_handler_t::replace) +
            "\n",
        stdout);
  } else {
    for (const Finding& finding : report.findings) {
      if (is_listed(finding)) print(finding_line(finding) + "\n", stdout);
    }
    if (arguments.changes && !report.error) {
      for (const Change& change : report.changes) print(change_line(change) + "\n", stdout);
    }
    if (!report.error) print(summary_line(report) + "\n", stdout);
  }
  if (report.error) {
    print(fmt::format("pellago: {}\n", *report.error), stderr);
    return kExitError;
  }
  // Notes say what the merge will do as asked (subclips, what a second merge leaves alone).
  const bool worth_a_look = std::ranges::any_of(
      report.findings, [](const Finding& finding) { return finding.severity != Severity::note; });
  return worth_a_look ? kExitFindings : kExitOk;
}

}  // namespace

void add_check_command(CLI::App& app, int& status) {
  auto arguments = std::make_shared<CheckArguments>();
  CLI::App* command = app.add_subcommand(
      "check", "Say what a merge would do and what in the sheet looks wrong, writing nothing");
  command->footer(kFooter);
  command->add_option("SHEET", arguments->sheet, "The log sheet (.xls or .xlsx)")->required();
  command->add_option("XML", arguments->xml, "The Final Cut Pro XML document to merge into")
      ->required();
  command->add_flag("--json", arguments->json, "Print one JSON document");
  command->add_flag("--changes", arguments->changes,
                    "Also list every change the merge would make to the document");
  add_rules_flags(*command, arguments->rules);
  command->callback([arguments, &status] { status = run_check(*arguments); });
}

}  // namespace pellago::cli
