#pragma once

#include <optional>
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

// What a Good cell writes: "TRUE" for yes or y in any ASCII letter case, nothing around it, else
// "FALSE"; under rules.good_words, "TRUE" or "FALSE" for the words that mean them, and none for
// any other text.
std::optional<std::string> good_flag(std::string_view cell, const Rules& rules = classic_rules());

}  // namespace pellago
