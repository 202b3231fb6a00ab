#pragma once

#include <optional>
#include <string>

#include "document/document.hpp"
#include "merge/resolve_clip_timing.hpp"
#include "merge/rules.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Where a clip's auxiliary timecodes stand, found before any is written.
struct AuxPlace {
  // What holds them: the clip, or under rules.follow_file_references the file it shows.
  Element scope;
  // The display format they are counted in: the file's own timecode's, or under
  // rules.create_missing_elements the clip's when the file has none. Without one (or without a
  // file to hold them, when the scope is a file) the aux columns write nothing.
  std::optional<std::string> display_format;
  // A replaced aux timecode's successor takes its place (Rules::merge_again_in_place); otherwise
  // it goes to the end of the file.
  bool replaced_in_place = false;
  // A value that is no timecode at the clip's timebase is left out
  // (Rules::leave_out_impossible_values); otherwise it is written as it reads.
  bool leaves_out_non_timecodes = false;
};

AuxPlace place_aux(Element clip, const ClipTiming& timing, const Rules& rules = classic_rules(),
                   const DescribedFiles* files = nullptr);

// Replaces the auxiliary timecodes at `place` with the row's values in the aux timecode columns
// ("Aux TC 1" for source aux1, ...), appending the new ones to its first file element (the file
// itself when that is the scope). Returns how many values it left out.
std::size_t apply_aux_timecodes(const AuxPlace& place, const LogRow& row, const ClipTiming& timing);

}  // namespace pellago
