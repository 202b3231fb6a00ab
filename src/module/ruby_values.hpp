#pragma once

// Conversions between the engine's values and the Ruby objects the host sees.

#include <ruby.h>

#include "timecode/frame_rate.hpp"
#include "workbook/workbook.hpp"

namespace pellago::ruby {

// The frame-rate table as Ruby sees it: an Array of Hashes with the Symbol keys :type,
// :timebase, :ntsc and :fcp_rate; fcp_rate is an Integer when it is a whole number and a Float
// otherwise. Call under protect.
VALUE frame_rates_value(const FrameRates& rates);

// The top-level constant FRAME_RATES, looked up now and read into `table` (NameError when it is
// not defined). Entries whose :timebase is not a whole number or whose :ntsc is not a String can
// equal no clip's rate and are left out.
const FrameRates& read_frame_rates(FrameRates& table);

// nil, a Float, a String, true or false, or a date (see date_value). Call under protect.
VALUE cell_value(const Cell& cell);

}  // namespace pellago::ruby
