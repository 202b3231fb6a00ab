#include "document/select.hpp"

#include <fmt/format.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "error.hpp"

namespace pellago {

namespace {

bool is_xpath(std::string_view selector) {
  return selector.starts_with('/') || selector.starts_with("./") || selector.starts_with("..") ||
         selector == ".";
}

// Compares a byte at a time without measuring the node's name first: names are short and most
// differ early. `name` holds no NUL byte, so a shorter own name stops the loop at its end.
bool is_element_named(xmlNodePtr node, std::string_view name) {
  if (node->type != XML_ELEMENT_NODE || node->ns != nullptr) return false;
  const char* own = reinterpret_cast<const char*>(node->name);
  for (const char c : name) {
    if (*own++ != c) return false;
  }
  return *own == '\0';
}

// Whether `node` (strictly below `context`) ends the chain: its name is the last one, its parent's
// the one before, and so on, with the chain's first element still strictly below `context`.
bool ends_chain(xmlNodePtr node, xmlNodePtr context, const Selector& selector) {
  for (std::size_t i = selector.name_count; i-- > 0;) {
    if (node == context || !is_element_named(node, selector.names[i])) return false;
    node = node->parent;
  }
  return true;
}

// Whether the text of `element` (as XPath compares it: all the text below it) is `value`. An
// element holding nothing or one plain text node, as most do, is compared in place.
bool has_text(xmlNodePtr element, std::string_view value) {
  const xmlNodePtr only = element->children;
  if (!only) return value.empty();
  if (!only->next && only->type == XML_TEXT_NODE) {
    return value == (only->content ? reinterpret_cast<const char*>(only->content) : "");
  }
  xmlChar* content = xmlNodeGetContent(element);
  const bool equal = value == (content ? reinterpret_cast<const char*>(content) : "");
  xmlFree(content);
  return equal;
}

// Whether `node` has a child element named `child` whose text is `value`.
bool has_child_with_text(xmlNodePtr node, std::string_view child, std::string_view value) {
  for (xmlNodePtr candidate = node->children; candidate; candidate = candidate->next) {
    if (is_element_named(candidate, child) && has_text(candidate, value)) return true;
  }
  return false;
}

// The first byte of the name that ends the chain: most element names differ from it there, so a
// walk compares it before anything else.
unsigned char last_initial(const Selector& selector) {
  return static_cast<unsigned char>(selector.names[selector.name_count - 1][0]);
}

// The next node after `node` in document order within the subtree of `context`, descending only
// into elements (never into entity references, whose children belong to the entity).
xmlNodePtr next_in_subtree(xmlNodePtr node, xmlNodePtr context) {
  if (node->type == XML_ELEMENT_NODE && node->children) return node->children;
  while (node != context && !node->next) node = node->parent;
  return node == context ? nullptr : node->next;
}

bool is_match(xmlNodePtr node, xmlNodePtr context, const Selector& selector) {
  return ends_chain(node, context, selector) &&
         (selector.child.empty() || has_child_with_text(node, selector.child, selector.value));
}

bool can_hold_elements(xmlNodePtr context) {
  return context->type == XML_ELEMENT_NODE || context->type == XML_DOCUMENT_NODE;
}

void ignore_xpath_error(void*, xmlErrorPtr) {}

std::string error_text(const xmlError& error) {
  std::string text = error.message ? error.message : "invalid expression";
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  return text;
}

struct XPathContextDeleter {
  void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
struct XPathObjectDeleter {
  void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};

}  // namespace

std::vector<xmlNodePtr> select(xmlNodePtr context, std::string_view selector, Matches matches) {
  if (is_xpath(selector)) return select_xpath(context, std::string(selector), matches);
  const std::optional<Selector> chain = parse_selector(selector);
  if (!chain) return select_xpath(context, fmt::format(".//{}", selector), matches);
  return select(context, *chain, matches);
}

std::vector<xmlNodePtr> select(xmlNodePtr context, const Selector& selector, Matches matches) {
  std::vector<xmlNodePtr> found;
  if (!can_hold_elements(context)) return found;
  const unsigned char initial = last_initial(selector);
  for (xmlNodePtr node = context->children; node; node = next_in_subtree(node, context)) {
    if (node->type != XML_ELEMENT_NODE || node->name[0] != initial) continue;
    if (!is_match(node, context, selector)) continue;
    found.push_back(node);
    if (matches == Matches::first) break;
  }
  return found;
}

void select_each(xmlNodePtr context, std::span<const Selector> selectors, Matches matches,
                 const std::function<void(std::size_t, xmlNodePtr)>& found) {
  if (!can_hold_elements(context)) return;
  if (selectors.size() > kMaxSelectorsAtOnce) {
    throw Error(fmt::format("cannot look for {} selectors in one walk (at most {})",
                            selectors.size(), kMaxSelectorsAtOnce));
  }
  // By the first byte of a name, the selectors whose chain ends in a name starting with it that
  // still look for matches, one bit each.
  std::array<std::uint64_t, 256> waiting{};
  for (std::size_t i = 0; i < selectors.size(); ++i) {
    waiting[last_initial(selectors[i])] |= std::uint64_t{1} << i;
  }
  std::size_t unmatched = selectors.size();
  for (xmlNodePtr node = context->children; node && unmatched > 0;
       node = next_in_subtree(node, context)) {
    if (node->type != XML_ELEMENT_NODE) continue;
    std::uint64_t& candidates = waiting[node->name[0]];
    for (std::uint64_t left = candidates; left != 0; left &= left - 1) {
      const auto i = static_cast<std::size_t>(std::countr_zero(left));
      if (!is_match(node, context, selectors[i])) continue;
      found(i, node);
      if (matches == Matches::first) {
        candidates &= ~(std::uint64_t{1} << i);
        --unmatched;
      }
    }
  }
}

std::vector<xmlNodePtr> select_xpath(xmlNodePtr context, const std::string& expression,
                                     Matches matches) {
  std::unique_ptr<xmlXPathContext, XPathContextDeleter> xpath(xmlXPathNewContext(context->doc));
  if (!xpath) throw Error(fmt::format("cannot evaluate \"{}\": out of memory", expression));
  xpath->error = ignore_xpath_error;
  std::unique_ptr<xmlXPathObject, XPathObjectDeleter> result(
      xmlXPathNodeEval(context, reinterpret_cast<const xmlChar*>(expression.c_str()), xpath.get()));
  if (!result) {
    throw Error(fmt::format("cannot evaluate the XPath expression \"{}\": {}", expression,
                            error_text(xpath->lastError)));
  }
  std::vector<xmlNodePtr> found;
  xmlNodeSetPtr set = result->type == XPATH_NODESET ? result->nodesetval : nullptr;
  if (!set) return found;
  xmlXPathNodeSetSort(set);
  for (int i = 0; i < set->nodeNr; ++i) {
    if (set->nodeTab[i]->type != XML_ELEMENT_NODE) continue;
    found.push_back(set->nodeTab[i]);
    if (matches == Matches::first) break;
  }
  return found;
}

}  // namespace pellago
