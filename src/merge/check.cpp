#include "merge/check.hpp"

#include "error.hpp"
#include "merge/merge_collector.hpp"
#include "merge/merge_document.hpp"

namespace pellago {

std::string_view kind_name(FindingKind kind) {
  switch (kind) {
    case FindingKind::unmatched_name:
      return "unmatched_name";
    case FindingKind::near_header:
      return "near_header";
    case FindingKind::ignored_marker_header:
      return "ignored_marker_header";
    case FindingKind::good_not_yes:
      return "good_not_yes";
    case FindingKind::unknown_marker_color:
      return "unknown_marker_color";
    case FindingKind::not_a_timecode:
      return "not_a_timecode";
    case FindingKind::outside_media:
      return "outside_media";
    case FindingKind::out_before_in:
      return "out_before_in";
    case FindingKind::position_limit:
      return "position_limit";
    case FindingKind::shared_clip_name:
      return "shared_clip_name";
    case FindingKind::repeated_name:
      return "repeated_name";
    case FindingKind::merge_fails:
      return "merge_fails";
  }
  return "unknown";
}

std::string_view severity_name(Severity severity) {
  switch (severity) {
    case Severity::note:
      return "note";
    case Severity::warning:
      return "warning";
    case Severity::error:
      return "error";
  }
  return "unknown";
}

std::string_view change_kind_name(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::text_set:
      return "text_set";
    case ChangeKind::attribute_set:
      return "attribute_set";
    case ChangeKind::added:
      return "added";
    case ChangeKind::removed:
      return "removed";
    case ChangeKind::subclip_made:
      return "subclip_made";
  }
  return "unknown";
}

CheckReport check(const std::string& sheet_path, const std::string& xml_path,
                  const CheckOptions& options) {
  CheckReport report;
  MergeCollector collector(report, options.changes);
  try {
    report.merge = merge_document(sheet_path, xml_path, {}, &collector).report;
  } catch (const Error& error) {
    collector.flush_findings();
    report.merge.outcome = Outcome::merged;
    report.error = error.what();
    report.system_error = error.system_error;
    report.findings.push_back({FindingKind::merge_fails,
                               Severity::error,
                               std::nullopt,
                               std::nullopt,
                               std::nullopt,
                               error.what(),
                               {}});
  }
  return report;
}

}  // namespace pellago
