#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "document/selector.hpp"

namespace pellago {

enum class Matches { first, all };

// The elements a selector picks below `context` (an element or a document node), in document
// order; with Matches::first at most one. Name chains ("rate/timebase"), also with a condition
// on a child's text at the end ("timecode[source=\"aux1\"]"), are matched by walking the
// subtree; XPath selectors ("/...", "./...", "..", ".") and any other form are evaluated by
// libxml2's XPath engine as written or, for the other forms, as ".//" followed by the selector.
std::vector<xmlNodePtr> select(xmlNodePtr context, std::string_view selector, Matches matches);
std::vector<xmlNodePtr> select(xmlNodePtr context, const Selector& selector, Matches matches);

// Several name chains in one walk of the subtree: calls found(i, node) for each match of
// selectors[i], in document order (in selector order for a node that several match); what reaches
// it for selector i is what select gives. With Matches::first the walk ends once every selector
// has had its match. At most kMaxSelectorsAtOnce selectors.
inline constexpr std::size_t kMaxSelectorsAtOnce = 64;
void select_each(xmlNodePtr context, std::span<const Selector> selectors, Matches matches,
                 const std::function<void(std::size_t, xmlNodePtr)>& found);

// The elements of an XPath expression evaluated with `context` as context node, in document order.
std::vector<xmlNodePtr> select_xpath(xmlNodePtr context, const std::string& expression,
                                     Matches matches);

}  // namespace pellago
