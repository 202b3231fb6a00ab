#pragma once

#include "document/document.hpp"
#include "merge/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Inserts one marker element per entry of the row right after the clip's first media element
// (so they stand in reverse order). Throws Error when the clip has no rate entry or no media.
void apply_markers(Element clip, const LogRow& row, const ClipTiming& timing);

}  // namespace pellago
