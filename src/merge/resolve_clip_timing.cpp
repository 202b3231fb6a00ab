#include "merge/resolve_clip_timing.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "error.hpp"
#include "timecode/read_integer.hpp"
#include "timecode/to_frames.hpp"
#include "timecode/trimmed.hpp"

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

// The file's own timecode: its first <timecode> whose <source> names no aux timecode.
Element source_timecode(Element file) {
  for (Element timecode : file.children("timecode")) {
    const Element source = timecode.child("source");
    if (!source || !source.text().starts_with("aux")) return timecode;
  }
  return Element();
}

// The frame the clip's media starts at, from the file's own timecode; 0 without one.
std::int64_t source_start_frame(Element clip, const DescribedFiles* files,
                                const ClipTiming& timing) {
  const Element file = described_file(clip, files);
  const Element timecode = file ? source_timecode(file) : Element();
  if (!timecode) return 0;
  if (const Element frame = timecode.child("frame")) return read_integer(frame.text());
  const Element string = timecode.child("string");
  if (!string) return 0;
  const double rate = timing.rate ? timing.rate->fcp_rate : static_cast<double>(timing.timebase);
  return to_frames(string.text(), rate, timing.display_format);
}

// The rate a timebase the table lacks counts frames at.
FrameRate rate_of_timebase(std::int64_t timebase, bool ntsc) {
  const auto frames = static_cast<double>(timebase);
  return FrameRate{.type = fmt::format("{} fps", ntsc ? frames * 1000 / 1001 : frames),
                   .timebase = static_cast<int>(std::min<std::int64_t>(timebase, INT32_MAX)),
                   .ntsc = ntsc ? "TRUE" : "FALSE",
                   .fcp_rate = ntsc ? frames * 1000 / 1001 : frames};
}

}  // namespace

Element described_file(Element clip, const DescribedFiles* files) {
  // A clip item shows its own file, not one of a sequence nested in it.
  const Element file = clip.name() == "clipitem" ? clip.child("file") : clip.first("file");
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
  const std::string ntsc = rules.any_case_truth_words ? upper_ascii(timing.ntsc) : timing.ntsc;
  timing.rate = find_frame_rate(rates, timing.timebase, ntsc);
  if (!timing.rate && rules.rates_beyond_the_table && timing.timebase > 0) {
    timing.rate = rate_of_timebase(timing.timebase, ntsc == "TRUE");
  }
  if (rules.start_at_source_timecode) {
    timing.start_frame = source_start_frame(clip, files, timing);
  } else if (found[3]) {
    timing.start_frame = read_integer(found[3].text());
  }
  return timing;
}

}  // namespace pellago
