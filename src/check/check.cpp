#include "check/check.hpp"

#include "check/merge_collector.hpp"
#include "error.hpp"
#include "merge/merge_document.hpp"

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
  MergeCollector collector(report, options);
  try {
    report.merge = merge_document(sheet_path, xml_path, {}, &collector).report;
  } catch (const Error& error) {
    collector.flush_findings();
    report.merge.outcome = Outcome::merged;
    report.error = error.what();
    report.system_error = error.system_error;
    report.findings.push_back(
        {.kind = FindingKind::merge_fails, .severity = Severity::error, .message = error.what()});
  }
  return report;
}

}  // namespace pellago
