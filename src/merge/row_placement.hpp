#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/document.hpp"
#include "merge/aux_timecodes.hpp"
#include "sheet/log_sheet.hpp"
#include "timecode/clip_timing.hpp"

namespace pellago {

// The name of the row's marker at `index` (from 0): its Marker Name, or "Marker 1", "Marker 2"...
std::string marker_name(const MarkerEntry& marker, std::size_t index);

// A timecode as a frame count from the clip's start, at the clip's rate entry and display format;
// throws Error (rate_entry's) when the clip has none.
std::int64_t frame_in_clip(const std::string& timecode, const ClipTiming& timing);

// The frame count from the clip's start as a timecode of the clip, the inverse of frame_in_clip.
std::string timecode_in_clip(std::int64_t frame, const ClipTiming& timing);

// The first and last frame of a subclip, from the clip's start, as its In and Out name them.
struct FrameSpan {
  std::int64_t first = 0;
  std::int64_t last = 0;
};

// Where a row's timecodes land in its target clip, worked out once before the steps write them:
// the steps write these frames and this placement, and the merge's observer is told the same.
struct RowPlacement {
  // The row's subclip when it cuts one (it makes a subclip, and In and Out both hold text).
  std::optional<FrameSpan> subclip;
  // The frame of each of the row's markers, in the row's order; when it has markers.
  std::optional<std::vector<std::int64_t>> marker_frames;
  // The element the row's markers go right after: a clip's first <media>, a clip item's <file>
  // (its last child when it has none).
  Element markers_after;
  std::string_view markers_after_name;
  // For each of the row's markers, whether the clip has a marker at its frame with its name
  // already; when it has markers and frames.
  std::vector<bool> markers_present;
  // Markers present already are not added again (Rules::merge_again_in_place).
  bool skips_present_markers = false;
  // For each of the row's markers, whether it is left out: its timecode is no timecode, or lands
  // outside the clip's media (Rules::leave_out_impossible_values). Empty when none is.
  std::vector<bool> markers_left_out;
  // Where the row's aux timecodes go.
  AuxPlace aux;
  // The row cuts a subclip that cannot be, and nothing of it is written (ClipMatch::left_out).
  bool row_left_out = false;
};

// Marks the row's markers whose timecode is no timecode at the clip's timebase, or lands outside
// its media of `clip_duration` frames, as left out.
void leave_out_impossible_markers(RowPlacement& placement, const LogRow& row,
                                  const ClipTiming& timing, std::int64_t clip_duration);

// The placement of the row in its target clip (a master clip or its copy, or a clip item of a
// sequence). Frames need the clip's rate entry: without one they are left out, and the step that
// needs them fails through `planned`.
RowPlacement place_row(const LogRow& row, Element clip, const ClipTiming& timing,
                       bool makes_subclip, bool clip_item = false);

// The planned value, or, when the clip's missing rate entry kept it from being planned, the error
// that says so.
template <typename T>
const T& planned(const std::optional<T>& value, const ClipTiming& timing) {
  if (!value) rate_entry(timing);
  return *value;
}

}  // namespace pellago
