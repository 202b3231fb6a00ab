#include "merge/aux_timecodes.hpp"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "merge/required_element.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {
namespace {

struct AuxSource {
  std::string_view header;
  std::string_view source;
  std::string_view selector;
};

constexpr std::array<AuxSource, 2> kAuxSources{{
    {"Aux TC 1", "aux1", R"(timecode[source="aux1"])"},
    {"Aux TC 2", "aux2", R"(timecode[source="aux2"])"},
}};

// <timecode> <frame>F</frame> <displayformat>D</displayformat> <source>S</source> </timecode>,
// the display format as it stands in the file's own timecode.
void build_aux_timecode(Element timecode, std::int64_t frames, const std::string& display_format,
                        std::string_view source) {
  timecode.append_text(" ");
  timecode.append_element("frame", std::to_string(frames));
  timecode.append_text(" ");
  timecode.append_element("displayformat", display_format);
  timecode.append_text(" ");
  timecode.append_element("source", source);
  timecode.append_text(" ");
}

}  // namespace

std::vector<std::string_view> aux_timecode_headers() {
  std::vector<std::string_view> headers;
  for (const AuxSource& aux : kAuxSources) headers.push_back(aux.header);
  return headers;
}

void apply_aux_timecodes(Element clip, const LogRow& row, const ClipTiming& timing) {
  const Element file_format = clip.first("file/timecode/displayformat");
  if (!file_format) return;
  const std::string display_format = file_format.text();
  for (const AuxSource& aux : kAuxSources) {
    const std::string* value = row.field(aux.header);
    if (value == nullptr || value->empty()) continue;
    if (Element replaced = clip.first(aux.selector)) replaced.remove();
    const std::int64_t frames =
        to_frames(*value, static_cast<double>(timing.timebase), display_format);
    const Element file = required(clip, "file", fmt::format(" to hold \"{}\"", aux.header));
    const Element timecode = file.create_element("timecode");
    build_aux_timecode(timecode, frames, display_format, aux.source);
    file.append_child(timecode);
  }
}

}  // namespace pellago
