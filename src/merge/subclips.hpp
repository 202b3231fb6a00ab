#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "document/document.hpp"
#include "merge/clip_match.hpp"
#include "merge/row_placement.hpp"
#include "merge/rules.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// Whether the row cuts a subclip when several rows name its clip: its In and Out hold text.
bool cuts_subclip(const LogRow& row);

// An empty "In" cell sets the clip's first in (and first media/audio/in, if any) to -1; the same
// for "Out". An absent column or a non-empty cell changes nothing. A clip without an in (out)
// throws Error, or under rules.create_missing_elements gets one holding -1 after its rate.
void clear_empty_in_out(const LogRow& row, Element clip, const Rules& rules = classic_rules());

// The subclips among `clips` (in document order) that earlier merges cut.
EarlierSubclips earlier_subclips(const std::vector<Element>& clips);

// Whether the subclip is the one a row cuts from `span` of its clip (of `clip_duration` frames):
// its duration and its first track clip item's start offset are the ones the row gives it.
bool is_cut_at(Element subclip, const FrameSpan& span, std::int64_t clip_duration);

// Whether the earlier subclip is the one the row at row position j of the match cuts.
using SubclipWanted = std::function<bool(Element subclip, std::size_t j)>;

// Fills match.clips with a clip for each copy number of match.copy_numbers, in row order: one of
// `earlier` (subclips an earlier merge cut from the clip) that `wanted` says the row cuts, or a
// renamed deep copy of the clip. Copy k gets the first id "ID clip0n" (n = 1, 2...) that neither
// an earlier subclip nor another copy has (the clip's name stands in for a missing id under
// rules.create_missing_elements), no uuid, every masterclipid set to that id, and clip item i the
// id "ID clipitem0ni". Under rules.subclips_beside_master_clip the copies stand right after the
// clip and its earlier subclips, without its links, and the clip keeps them; otherwise the clip's
// links are removed and the copies are appended to its parent.
void make_subclip_copies(ClipMatch& match, const Rules& rules = classic_rules(),
                         std::span<const Element> earlier = {}, const SubclipWanted& wanted = {});

// The id of copy number `copy` (1 for the second row) of the clip with id `clip_id`: "ID clip01".
std::string copy_id(const std::string& clip_id, std::size_t copy);

// The id make_subclip_copies gives copy number `copy` of the matched clip.
std::string copy_id(const ClipMatch& match, std::size_t copy);

// The id of the clip a copy was made from ("A001" for "A001 clip01"); any other id as it is.
std::string id_copied_from(const std::string& id);

// The integer in the clip's first duration element.
std::int64_t read_clip_duration(Element clip);

// Turns the target clip into the subclip the row describes: its "Subclip Name" and, when "In" and
// "Out" both hold timecodes, its duration, cleared in and out, and on every track clip item new
// name, duration, in, out, start, end and a subclipinfo with the offsets into the media. The
// items take the Subclip Name; under rules.subclips_beside_master_clip, the clip's name. Elements
// the clip or its items lack are added under rules.create_missing_elements.
void apply_subclip(const LogRow& row, Element clip, const RowPlacement& placement,
                   const ClipTiming& timing, std::int64_t clip_duration,
                   const Rules& rules = classic_rules());

}  // namespace pellago
