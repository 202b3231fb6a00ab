#pragma once

#include <libxml/tree.h>

#include <string>
#include <string_view>
#include <vector>

namespace pellago {

enum class Matches { first, all };

// The elements a selector picks below `context` (an element or a document node), in document
// order; with Matches::first at most one. Name chains ("rate/timebase"), also with a condition
// on a child's text at the end ("timecode[source=\"aux1\"]"), are matched by walking the
// subtree; XPath selectors ("/...", "./...", "..", ".") and any other form are evaluated by
// libxml2's XPath engine as written or, for the other forms, as ".//" followed by the selector.
std::vector<xmlNodePtr> select(xmlNodePtr context, std::string_view selector, Matches matches);

// The elements of an XPath expression evaluated with `context` as context node, in document order.
std::vector<xmlNodePtr> select_xpath(xmlNodePtr context, const std::string& expression,
                                     Matches matches);

}  // namespace pellago
