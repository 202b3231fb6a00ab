#pragma once

#include <ruby.h>

#include "merge/add_log_notes.hpp"

namespace pellago::ruby {

// The engine's view of the Ruby object that add_log_notes was called on:
// - the header row becomes a new Array in the receiver's @column_headers;
// - progress, unless `report_progress` is false, goes to the objects held in the receiver's
//   @progressIndicator and @progressView, read afresh at every call and called like Ruby code
//   would (public methods only, Integer numbers);
// - the frame-rate table is the top-level constant FRAME_RATES, read into `frame_rates` every
//   time the engine asks for it.
// Every callback runs its Ruby calls under protect, so a Ruby exception raised by the host
// unwinds the engine as a RubyJump.
Host host_for(VALUE receiver, bool report_progress, FrameRates& frame_rates);

}  // namespace pellago::ruby
