#include "merge/clip_layout.hpp"

#include <string>

namespace pellago {
namespace {

Element child_named(Element parent, std::string_view name) { return parent.child(name); }

// Inserts `node` among the children of `parent`, whose order is `order`.
void insert_in_order(Element parent, std::span<const std::string_view> order, Element node) {
  const std::string name = node.name();
  auto preceding = std::ranges::find(order, name);
  while (preceding != order.begin()) {
    if (Element sibling = child_named(parent, *--preceding)) {
      sibling.insert_after(node);
      return;
    }
  }
  if (Element first = parent.child("*")) {
    first.insert_before(node);
  } else {
    parent.append_child(node);
  }
}

}  // namespace

Element add_child_in_order(Element parent, std::span<const std::string_view> order,
                           std::string_view name, std::string_view text) {
  const Element added = parent.create_element(name, text);
  insert_in_order(parent, order, added);
  return added;
}

Element add_in_place(Element clip, const Selector& chain, std::string_view text) {
  const std::size_t last = chain.name_count - 1;
  Element parent = clip;
  std::string_view parent_name;
  std::size_t i = 0;
  for (; i < last; ++i) {
    const Element container = child_named(parent, chain.names[i]);
    if (!container) break;
    parent = container;
    parent_name = chain.names[i];
  }
  // The missing part of the chain is built apart and inserted at once, so that it is one change.
  const Element added = clip.create_element(chain.names[i], i == last ? text : std::string_view());
  Element innermost = added;
  for (std::size_t j = i + 1; j <= last; ++j) {
    innermost = innermost.append_element(chain.names[j], j == last ? text : std::string_view());
  }
  insert_in_order(parent, children_of(parent_name), added);
  return innermost;
}

}  // namespace pellago
