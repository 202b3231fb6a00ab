#pragma once

#include "document/document.hpp"
#include "merge/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Replaces the clip's aux1/aux2 timecodes with the row's "Aux TC 1" and "Aux TC 2" values,
// appending the new ones to the clip's first file element.
void apply_aux_timecodes(Element clip, const LogRow& row, const ClipTiming& timing);

}  // namespace pellago
