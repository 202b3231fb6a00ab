#include "merge/markers.hpp"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "merge/required_element.hpp"

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

// <marker> <in>F</in> <out>-1</out> <name>Marker N</name> <comment/> <color><alpha>0</alpha>
// <red>255</red><green>0</green><blue>0</blue></color> </marker>, with the entry's texts in place
// of the name, the comment and the colour it gives; the entry is the row's marker at `index`.
void build_marker(Element marker, std::int64_t frame, const MarkerEntry& entry, std::size_t index) {
  const MarkerColor* color = entry.color ? find_marker_color(*entry.color) : nullptr;
  if (!color) color = &kMarkerColors[0];
  marker.append_text(" ");
  marker.append_element("in", std::to_string(frame));
  marker.append_text(" ");
  marker.append_element("out", "-1");
  marker.append_text(" ");
  marker.append_element("name", marker_name(entry, index));
  marker.append_text(" ");
  marker.append_element("comment", entry.comment ? *entry.comment : std::string());
  marker.append_text(" ");
  Element rgba = marker.append_element("color");
  rgba.append_element("alpha", "0");
  rgba.append_element("red", std::to_string(color->red));
  rgba.append_element("green", std::to_string(color->green));
  rgba.append_element("blue", std::to_string(color->blue));
  marker.append_text(" ");
}

}  // namespace

std::vector<std::string_view> marker_color_names() {
  std::vector<std::string_view> names;
  for (const MarkerColor& color : kMarkerColors) names.push_back(color.name);
  return names;
}

std::size_t apply_markers(const LogRow& row, const RowPlacement& placement,
                          const ClipTiming& timing) {
  if (row.markers.empty()) return 0;
  const std::vector<std::int64_t>& frames = planned(placement.marker_frames, timing);
  // A marker holds no media or file element, so the anchor stays the same while they are added.
  const Element media = require_found(placement.markers_after, placement.markers_after_name,
                                      " to place its markers after");
  std::size_t added = 0;
  for (std::size_t i = 0; i < row.markers.size(); ++i) {
    if (placement.skips_present_markers && placement.markers_present[i]) continue;
    if (i < placement.markers_left_out.size() && placement.markers_left_out[i]) continue;
    const Element marker = media.create_element("marker");
    build_marker(marker, frames[i], row.markers[i], i);
    media.insert_after(marker);
    ++added;
  }
  return added;
}

}  // namespace pellago
