#include "merge/resolve_clip_timing.hpp"

#include <fmt/format.h>

#include <algorithm>
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

std::string upper_ascii(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// Fills the timing elements the clip lacks from the file it refers to.
void fill_from_referred_file(Element clip, const DescribedFiles& files,
                             std::vector<Element>& found) {
  if (std::ranges::all_of(found, [](Element element) { return static_cast<bool>(element); })) {
    return;
  }
  const Element file = described_file(clip, &files);
  if (!file) return;
  const std::vector<Element> described = file.first_of(kTimingElements);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (!found[i]) found[i] = described[i];
  }
}

}  // namespace

Element described_file(Element clip, const DescribedFiles* files) {
  const Element file = clip.first("file");
  if (!file || file.holds_elements() || !files) return file;
  const std::optional<std::string> id = file.attribute("id");
  const auto found = id ? files->find(*id) : files->end();
  return found == files->end() ? file : found->second;
}

DescribedFiles described_files(const Document& document) {
  DescribedFiles files;
  for (Element file : document.all("file")) {
    if (!file.holds_elements()) continue;
    if (std::optional<std::string> id = file.attribute("id")) files.try_emplace(*id, file);
  }
  return files;
}

ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates, const Rules& rules,
                               const DescribedFiles* files) {
  std::vector<Element> found = clip.first_of(kTimingElements);
  if (rules.follow_file_references && files) fill_from_referred_file(clip, *files, found);
  ClipTiming timing;
  timing.timebase = read_integer(required_element(found[0], "<rate><timebase>").text());
  if (found[1] || !rules.missing_ntsc_is_false) {
    timing.ntsc = required_element(found[1], "<rate><ntsc>").text();
  } else {
    timing.ntsc = "FALSE";
  }
  if (found[2]) timing.display_format = found[2].text();
  timing.rate = find_frame_rate(
      rates, timing.timebase, rules.any_case_truth_words ? upper_ascii(timing.ntsc) : timing.ntsc);
  if (found[3]) timing.start_frame = read_integer(found[3].text());
  return timing;
}

}  // namespace pellago
