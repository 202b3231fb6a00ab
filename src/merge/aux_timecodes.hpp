#pragma once

#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Replaces the clip's auxiliary timecodes with the row's values in the aux timecode columns
// ("Aux TC 1" for source aux1, ...), appending the new ones to the clip's first file element.
void apply_aux_timecodes(Element clip, const LogRow& row, const ClipTiming& timing);

}  // namespace pellago
