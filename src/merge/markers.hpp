#pragma once

#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "merge/row_placement.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Inserts one marker element per entry of the row right after the placement's anchor (a clip's
// first media element), at the frames of the row's placement (so they stand in reverse order),
// leaving out those the clip has already when the placement says to. Returns how many it added.
// Throws Error when the clip has no rate entry or no anchor.
std::size_t apply_markers(const LogRow& row, const RowPlacement& placement,
                          const ClipTiming& timing);

// The names of the marker colour table, in its order; any other colour leaves a marker red.
std::vector<std::string_view> marker_color_names();

}  // namespace pellago
