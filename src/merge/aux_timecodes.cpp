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

// Looked up in one walk of the scope: each aux column's timecode (in table order) and the file
// that takes the new ones.
constexpr std::size_t kFile = kAuxColumns.size();
constexpr std::array<Selector, kFile + 1> kAuxElements = [] {
  std::array<Selector, kFile + 1> elements{};
  for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
    elements[i] = *parse_selector(kAuxColumns[i].element);
  }
  elements[kFile] = name_chain("file");
  return elements;
}();

constexpr Selector kClipFileFormat = name_chain("file/timecode/displayformat");
constexpr Selector kFileFormat = name_chain("timecode/displayformat");

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

// The scope's aux timecodes and the file that takes new ones; the file is the scope itself when
// that is a file.
std::vector<Element> aux_elements(Element scope) {
  std::vector<Element> found = scope.first_of(kAuxElements);
  if (scope.name() == "file") found[kFile] = scope;
  return found;
}

}  // namespace

AuxPlace place_aux(Element clip, const ClipTiming& timing, const Rules& rules,
                   const DescribedFiles* files) {
  if (!rules.follow_file_references) {
    const Element format = clip.first(kClipFileFormat);
    return {clip, format ? std::optional(format.text()) : std::nullopt, rules.merge_again_in_place};
  }
  const Element file = described_file(clip, files);
  // Without a file, or with a reference to one described nowhere, nothing can hold them.
  if (!file || !file.holds_elements()) {
    return {clip, std::nullopt, rules.merge_again_in_place, rules.leave_out_impossible_values};
  }
  const Element format = file ? file.first(kFileFormat) : Element();
  AuxPlace place{file, std::nullopt, rules.merge_again_in_place, rules.leave_out_impossible_values};
  if (format) {
    place.display_format = format.text();
  } else if (rules.create_missing_elements) {
    place.display_format = timing.display_format.empty() ? "NDF" : timing.display_format;
  }
  return place;
}

std::size_t apply_aux_timecodes(const AuxPlace& place, const LogRow& row,
                                const ClipTiming& timing) {
  if (!place.display_format) return 0;
  const std::string& display_format = *place.display_format;
  if (std::ranges::none_of(kAuxColumns,
                           [&row](const SheetColumn& aux) { return holds_value(row, aux); })) {
    return 0;
  }
  std::vector<Element> found = aux_elements(place.scope);
  std::size_t left_out = 0;
  for (std::size_t i = 0; i < kAuxColumns.size(); ++i) {
    const SheetColumn& aux = kAuxColumns[i];
    if (!holds_value(row, aux)) continue;
    if (place.leaves_out_non_timecodes && !is_timecode(*row.field(aux.header), timing.timebase)) {
      ++left_out;
      continue;
    }
    const std::int64_t frames =
        to_frames(*row.field(aux.header), static_cast<double>(timing.timebase), display_format);
    const Element replaced = found[i];
    if (replaced && place.replaced_in_place) {
      const Element timecode = replaced.create_element("timecode");
      build_aux_timecode(timecode, frames, display_format, kAuxElements[i].value);
      replaced.insert_after(timecode);
      replaced.remove();
      continue;
    }
    if (replaced) {
      replaced.remove();
      // What the removed timecode held is gone: look again. The timecode added below matches
      // neither the other source nor "file", so it needs no new look.
      found = aux_elements(place.scope);
    }
    const Element file = require_found(found[kFile], kAuxElements[kFile].text,
                                       fmt::format(" to hold \"{}\"", aux.header));
    const Element timecode = file.create_element("timecode");
    build_aux_timecode(timecode, frames, display_format, kAuxElements[i].value);
    file.append_child(timecode);
  }
  return left_out;
}

}  // namespace pellago
