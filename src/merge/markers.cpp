#include "merge/markers.hpp"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "merge/required_element.hpp"
#include "timecode/to_frames.hpp"

namespace pellago {
namespace {

struct MarkerColor {
  std::string_view name;
  int red;
  int green;
  int blue;
};

// A colour not in this table keeps the template's red.
constexpr std::array<MarkerColor, 8> kMarkerColors{{
    {"red", 255, 0, 0},
    {"orange", 255, 127, 0},
    {"yellow", 255, 255, 0},
    {"green", 48, 191, 72},
    {"turquoise", 48, 191, 191},
    {"blue", 0, 128, 255},
    {"purple", 127, 0, 255},
    {"pink", 255, 0, 127},
}};

const MarkerColor* find_marker_color(std::string_view name) {
  for (const MarkerColor& color : kMarkerColors) {
    if (color.name == name) return &color;
  }
  return nullptr;
}

// Only the two numbers go into the markup; the entry's texts are set as text afterwards.
std::string marker_markup(std::int64_t frame, std::size_t number) {
  return fmt::format(
      "<root> <marker> <in>{}</in> <out>-1</out> <name>Marker {}</name> <comment/> "
      "<color><alpha>0</alpha><red>255</red><green>0</green><blue>0</blue></color> "
      "</marker> </root>",
      frame, number);
}

void fill_marker(Element marker, const MarkerEntry& entry) {
  if (entry.name) marker.first("name").set_text(*entry.name);
  if (entry.comment) marker.first("comment").set_text(*entry.comment);
  if (!entry.color) return;
  if (const MarkerColor* color = find_marker_color(*entry.color)) {
    marker.first("color/red").set_text(std::to_string(color->red));
    marker.first("color/green").set_text(std::to_string(color->green));
    marker.first("color/blue").set_text(std::to_string(color->blue));
  }
}

}  // namespace

std::vector<std::string_view> marker_color_names() {
  std::vector<std::string_view> names;
  for (const MarkerColor& color : kMarkerColors) names.push_back(color.name);
  return names;
}

void apply_markers(Element clip, const LogRow& row, const ClipTiming& timing) {
  for (std::size_t i = 0; i < row.markers.size(); ++i) {
    const MarkerEntry& entry = row.markers[i];
    const std::int64_t frame =
        to_frames(entry.timecode, rate_entry(timing).fcp_rate, timing.display_format) -
        timing.start_frame;
    Document markup = Document::parse_string(marker_markup(frame, i + 1));
    Element marker = markup.first_xpath("//marker");
    fill_marker(marker, entry);
    required(clip, "media", " to place its markers after").insert_after(marker);
  }
}

}  // namespace pellago
