#pragma once

namespace pellago::ruby {

// Defines add_log_notes(sheet_path, xml_path, output_path) and
// to_frames(timecode, rate, display_format) as private methods of Object that take any number of
// arguments and raise ArgumentError unless given three. add_log_notes can be defined once per
// process: when this runs again (the same image loaded under another feature name) it raises
// TypeError and leaves the methods of the first time in force.
void define_methods();

}  // namespace pellago::ruby
