#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "document/document.hpp"
#include "document/selector.hpp"

namespace pellago {

// The children of a master clip and of its logging containers, in the order Final Cut Pro 7
// writes them (the markers the merge adds stand between <media> and <defaultangle>).
struct ChildOrder {
  std::string_view parent;  // empty for the clip itself
  std::span<const std::string_view> children;
};

inline constexpr std::array<std::string_view, 12> kClipChildren{
    "name",         "duration",    "rate",   "in",       "out",   "masterclipid",
    "ismasterclip", "logginginfo", "labels", "comments", "media", "defaultangle"};
inline constexpr std::array<std::string_view, 5> kLogginginfoChildren{
    "description", "scene", "shottake", "lognote", "good"};
inline constexpr std::array<std::string_view, 2> kLabelsChildren{"label", "label2"};
inline constexpr std::array<std::string_view, 6> kCommentsChildren{
    "mastercomment1", "mastercomment2", "mastercomment3",
    "mastercomment4", "clipcommenta",   "clipcommentb"};

// The first children of a clip item, as Final Cut Pro 7 writes them; the ones a subclip sets.
inline constexpr std::array<std::string_view, 7> kClipItemChildren{"name", "duration", "rate", "in",
                                                                   "out",  "start",    "end"};

inline constexpr std::array<ChildOrder, 4> kClipLayout{{
    {"", kClipChildren},
    {"logginginfo", kLogginginfoChildren},
    {"labels", kLabelsChildren},
    {"comments", kCommentsChildren},
}};

// The order of the children of `parent` ("" for the clip); empty for an element it does not know.
constexpr std::span<const std::string_view> children_of(std::string_view parent) {
  for (const ChildOrder& order : kClipLayout) {
    if (order.parent == parent) return order.children;
  }
  return {};
}

// Whether every name of the chain has its place among the children of the one before it (the
// first among the clip's): add_in_place can add the element it names.
constexpr bool has_place(std::string_view chain) {
  const std::optional<Selector> selector = parse_selector(chain);
  if (!selector || !selector->child.empty()) return false;
  std::string_view parent;
  for (std::size_t i = 0; i < selector->name_count; ++i) {
    if (std::ranges::find(children_of(parent), selector->names[i]) == children_of(parent).end()) {
      return false;
    }
    parent = selector->names[i];
  }
  return true;
}

// Adds the element the chain names ("logginginfo/good") to the clip, holding `text`, and returns
// it. Each name of the chain is looked for among the children of the one before it (the clip's
// for the first); the first that is missing is added, with the rest of the chain inside it, after
// the last of the siblings that come before it in kClipLayout's order that the parent holds, or
// first in the parent when it holds none of them. The chain must have a place (has_place).
Element add_in_place(Element clip, const Selector& chain, std::string_view text);

// Adds a `name` element holding `text` to `parent`, whose children come in `order`: after the last
// of those before it that `parent` holds, or first. Returns it.
Element add_child_in_order(Element parent, std::span<const std::string_view> order,
                           std::string_view name, std::string_view text);

}  // namespace pellago
