#include "check/check.hpp"

#include "check/change_record.hpp"
#include "check/findings_collector.hpp"
#include "error.hpp"
#include "merge/merge_document.hpp"
#include "merge/merge_observer.hpp"

namespace pellago {

std::string_view kind_name(FindingKind kind) {
  return kFindingKinds.at(static_cast<std::size_t>(kind)).name;
}

std::string_view severity_name(Severity severity) {
  return kSeverities.at(static_cast<std::size_t>(severity)).name;
}

std::string_view change_kind_name(ChangeKind kind) {
  return kChangeKinds.at(static_cast<std::size_t>(kind)).name;
}

CheckReport check(const std::string& sheet_path, const std::string& xml_path,
                  const CheckOptions& options) {
  CheckReport report;
  FindingsCollector findings(report, options);
  ChangeRecord changes(report.changes);
  MergeObservers observers;
  observers.observers.push_back(&findings);
  if (options.changes) observers.observers.push_back(&changes);
  try {
    Host host;
    host.rules = options.rules;
    host.worksheet = options.worksheet;
    report.merge = merge_document(sheet_path, xml_path, host, &observers).report;
  } catch (const Error& error) {
    findings.flush_findings();
    report.merge.outcome = Outcome::merged;
    report.error = error.what();
    report.system_error = error.system_error;
    report.findings.push_back({.kind = FindingKind::merge_fails,
                               .severity = Severity::error,
                               .row = error.row,
                               .column = error.column,
                               .clip = error.clip,
                               .message = error.what()});
  }
  return report;
}

}  // namespace pellago
