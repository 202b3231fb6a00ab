#include "check/check.hpp"

#include <array>

#include "check/change_record.hpp"
#include "check/findings_collector.hpp"
#include "error.hpp"
#include "merge/merge_document.hpp"
#include "merge/merge_observer.hpp"

namespace pellago {

namespace {

// Indexed by the enumerators' values, in their order.
constexpr std::array<std::string_view, 21> kKindNames{"unmatched_name",
                                                      "near_header",
                                                      "ignored_marker_header",
                                                      "good_not_yes",
                                                      "unknown_marker_color",
                                                      "not_a_timecode",
                                                      "outside_media",
                                                      "out_before_in",
                                                      "position_limit",
                                                      "shared_clip_name",
                                                      "repeated_name",
                                                      "marker_already_present",
                                                      "earlier_subclip",
                                                      "three_field_timecode",
                                                      "time_of_day_cell",
                                                      "timecode_without_digits",
                                                      "number_in_text_column",
                                                      "in_out_on_single_row",
                                                      "word_case",
                                                      "merge_fails",
                                                      "recovered_xml"};
constexpr std::array<std::string_view, 3> kSeverityNames{"note", "warning", "error"};
constexpr std::array<std::string_view, 5> kChangeKindNames{"text_set", "attribute_set", "added",
                                                           "removed", "subclip_made"};

}  // namespace

std::string_view kind_name(FindingKind kind) {
  return kKindNames.at(static_cast<std::size_t>(kind));
}

std::string_view severity_name(Severity severity) {
  return kSeverityNames.at(static_cast<std::size_t>(severity));
}

std::string_view change_kind_name(ChangeKind kind) {
  return kChangeKindNames.at(static_cast<std::size_t>(kind));
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
    report.merge = merge_document(sheet_path, xml_path, host, &observers).report;
  } catch (const Error& error) {
    findings.flush_findings();
    report.merge.outcome = Outcome::merged;
    report.error = error.what();
    report.system_error = error.system_error;
    report.findings.push_back({FindingKind::merge_fails,
                               Severity::error,
                               error.row,
                               error.column,
                               error.clip,
                               error.what(),
                               {}});
  }
  return report;
}

}  // namespace pellago
