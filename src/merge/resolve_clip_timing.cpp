#include "merge/resolve_clip_timing.hpp"

#include <fmt/format.h>

#include <array>
#include <vector>

#include "error.hpp"
#include "timecode/read_integer.hpp"

namespace pellago {

namespace {

// Looked up in one walk of the clip; the first two must be there.
constexpr std::array<Selector, 4> kTimingElements{
    name_chain("rate/timebase"),
    name_chain("rate/ntsc"),
    name_chain("displayformat"),
    name_chain("frame"),
};

Element required_element(Element found, std::string_view description) {
  if (!found) throw Error(fmt::format("no {} element", description));
  return found;
}

}  // namespace

ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates) {
  const std::vector<Element> found = clip.first_of(kTimingElements);
  ClipTiming timing;
  timing.timebase = read_integer(required_element(found[0], "<rate><timebase>").text());
  timing.ntsc = required_element(found[1], "<rate><ntsc>").text();
  if (found[2]) timing.display_format = found[2].text();
  timing.rate = find_frame_rate(rates, timing.timebase, timing.ntsc);
  if (found[3]) timing.start_frame = read_integer(found[3].text());
  return timing;
}

}  // namespace pellago
