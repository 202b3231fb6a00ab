#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "merge/log_sheet.hpp"

namespace pellago {

// Writes the row's logging columns (Good, Label, Label 2, Description, Scene, Shot/Take, Angle,
// Log Note, Master Comment 1-4, Comment 1-2) into the target clip, creating the first-match
// elements that are missing. Throws Error naming the missing element when an anchor is missing.
void apply_logging_fields(Element clip, const LogRow& row, Document& document);

// The column headers apply_logging_fields reads, in the order it writes them.
std::vector<std::string_view> logging_field_headers();

// A column apply_logging_fields reads and the elements of the clip it writes the cell into.
struct LoggingFieldElement {
  std::string_view header;    // "Label"
  std::string_view selector;  // "labels/label"
  // Only the first match is written, and the row adds the element, or fails, when the clip has
  // none; otherwise every match is written and none is added.
  bool first_match_only;
};

// One per header of logging_field_headers(), in that order.
std::vector<LoggingFieldElement> logging_field_elements();

// "TRUE" for a Good cell reading yes or y in any ASCII letter case, nothing around it; else
// "FALSE".
std::string good_flag(std::string_view cell);

}  // namespace pellago
