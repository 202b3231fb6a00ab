#include "merge/aux_timecodes.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "merge/required_element.hpp"
#include "sheet/columns.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {
namespace {

constexpr auto kAuxColumns = columns_of<ColumnRole::aux_timecode>();

// Looked up in one walk of the clip: the file's display format, each aux column's timecode (in
// table order) and the file that takes the new ones.
constexpr std::size_t kDisplayFormat = 0;
constexpr std::size_t kFirstAux = 1;
constexpr std::size_t kFile = kFirstAux + kAuxColumns.size();
constexpr std::array<Selector, kFile + 1> kAuxElements = [] {
  std::array<Selector, kFile + 1> elements{};
  elements[kDisplayFormat] = name_chain("file/timecode/displayformat");
  for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
    elements[kFirstAux + i] = *parse_selector(kAuxColumns[i].element);
  }
  elements[kFile] = name_chain("file");
  return elements;
}();

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

bool holds_value(const LogRow& row, const SheetColumn& aux) {
  const std::string* value = row.field(aux.header);
  return value != nullptr && !value->empty();
}

}  // namespace

void apply_aux_timecodes(Element clip, const LogRow& row, const ClipTiming& timing) {
  // A row without values only reads the display format, so the walk can stop there.
  const bool any_value = std::ranges::any_of(
      kAuxColumns, [&row](const SheetColumn& aux) { return holds_value(row, aux); });
  std::vector<Element> found =
      clip.first_of(std::span(kAuxElements).first(any_value ? kAuxElements.size() : 1));
  if (!found[kDisplayFormat]) return;
  const std::string display_format = found[kDisplayFormat].text();
  for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
    const SheetColumn& aux = kAuxColumns[i];
    if (!holds_value(row, aux)) continue;
    if (Element replaced = found[kFirstAux + i]) {
      replaced.remove();
      // What the removed timecode held is gone: look again. The timecode added below matches
      // neither the other source nor "file", so it needs no new look.
      found = clip.first_of(kAuxElements);
    }
    const std::int64_t frames =
        to_frames(*row.field(aux.header), static_cast<double>(timing.timebase), display_format);
    const Element file = require_found(found[kFile], kAuxElements[kFile].text,
                                       fmt::format(" to hold \"{}\"", aux.header));
    const Element timecode = file.create_element("timecode");
    build_aux_timecode(timecode, frames, display_format, kAuxElements[kFirstAux + i].value);
    file.append_child(timecode);
  }
}

}  // namespace pellago
