#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "merge/rules.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

// Writes the row's logging columns (the Good and logging text columns of the sheet's column table)
// into the target clip, creating the first-match elements that are missing. Throws Error naming
// the missing element when an anchor is missing. Under rules.create_missing_elements, a field
// whose elements the clip lacks gets one where Final Cut Pro 7 writes it, and nothing fails.
void apply_logging_fields(Element clip, const LogRow& row, Document& document,
                          const Rules& rules = classic_rules());

// "TRUE" for a Good cell reading yes or y in any ASCII letter case, nothing around it; else
// "FALSE".
std::string good_flag(std::string_view cell);

}  // namespace pellago
