#pragma once

#include "document/document.hpp"
#include "merge/log_sheet.hpp"

namespace pellago {

// Writes the row's logging columns (Good, Label, Label 2, Description, Scene, Shot/Take, Angle,
// Log Note, Master Comment 1-4, Comment 1-2) into the target clip, creating the first-match
// elements that are missing. Throws Error naming the missing element when an anchor is missing.
void apply_logging_fields(Element clip, const LogRow& row, Document& document);

}  // namespace pellago
