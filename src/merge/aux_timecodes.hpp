#pragma once

#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "merge/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Replaces the clip's aux1/aux2 timecodes with the row's "Aux TC 1" and "Aux TC 2" values,
// appending the new ones to the clip's first file element.
void apply_aux_timecodes(Element clip, const LogRow& row, const ClipTiming& timing);

// The column headers apply_aux_timecodes reads: "Aux TC 1", "Aux TC 2".
std::vector<std::string_view> aux_timecode_headers();

}  // namespace pellago
