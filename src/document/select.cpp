#include "document/select.hpp"

#include <fmt/format.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <cstring>
#include <memory>
#include <optional>

#include "error.hpp"

namespace pellago {

namespace {

bool is_xpath(std::string_view selector) {
  return selector.starts_with('/') || selector.starts_with("./") || selector.starts_with("..") ||
         selector == ".";
}

bool is_name_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-' || c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

// A name chain whose last element must have a child element of a given name whose text equals a
// given value: "timecode[source=\"aux1\"]" is the chain {"timecode"} and the condition source =
// aux1. Without a condition, `child` is empty.
struct ChainSelector {
  std::vector<std::string_view> names;
  std::string_view child;
  std::string_view value;
};

// "a/b/c" as {"a", "b", "c"}; empty when the selector is anything but names joined by "/".
std::vector<std::string_view> name_chain(std::string_view selector) {
  std::vector<std::string_view> names;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= selector.size(); ++i) {
    if (i < selector.size() && selector[i] != '/') {
      if (!is_name_character(selector[i])) return {};
      continue;
    }
    if (i == start) return {};
    names.push_back(selector.substr(start, i - start));
    start = i + 1;
  }
  return names;
}

// `[name="value"]` or `[name='value']` at the end of a selector, split off; nullopt when the
// selector does not end in such a condition.
std::optional<ChainSelector> chain_selector(std::string_view selector) {
  ChainSelector chain;
  if (selector.ends_with(']')) {
    const std::size_t open = selector.find('[');
    const std::size_t equals = selector.find('=', open);
    if (open == std::string_view::npos || equals == std::string_view::npos) return std::nullopt;
    const std::string_view child = selector.substr(open + 1, equals - open - 1);
    const std::string_view quoted = selector.substr(equals + 1, selector.size() - equals - 2);
    if (quoted.size() < 2 || (quoted.front() != '"' && quoted.front() != '\'') ||
        quoted.back() != quoted.front() ||
        quoted.substr(1, quoted.size() - 2).find(quoted.front()) != std::string_view::npos ||
        name_chain(child).size() != 1) {
      return std::nullopt;
    }
    chain.child = child;
    chain.value = quoted.substr(1, quoted.size() - 2);
    selector = selector.substr(0, open);
  }
  chain.names = name_chain(selector);
  if (chain.names.empty()) return std::nullopt;
  return chain;
}

// Compares without measuring the node's name first: most names differ in their first letter, which
// is compared before anything is called. `name` is never empty.
bool is_element_named(xmlNodePtr node, std::string_view name) {
  if (node->type != XML_ELEMENT_NODE || node->ns != nullptr) return false;
  const char* own = reinterpret_cast<const char*>(node->name);
  return own[0] == name[0] && std::strncmp(own, name.data(), name.size()) == 0 &&
         own[name.size()] == '\0';
}

// Whether `node` (strictly below `context`) ends the chain: its name is the last one, its parent's
// the one before, and so on, with the chain's first element still strictly below `context`.
bool ends_chain(xmlNodePtr node, xmlNodePtr context, const std::vector<std::string_view>& names) {
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    if (node == context || !is_element_named(node, *name)) return false;
    node = node->parent;
  }
  return true;
}

// Whether `node` has a child element named `child` whose text (as XPath compares it: all the text
// below it) is `value`.
bool has_child_with_text(xmlNodePtr node, std::string_view child, std::string_view value) {
  for (xmlNodePtr candidate = node->children; candidate; candidate = candidate->next) {
    if (!is_element_named(candidate, child)) continue;
    xmlChar* content = xmlNodeGetContent(candidate);
    const bool equal = value == (content ? reinterpret_cast<const char*>(content) : "");
    xmlFree(content);
    if (equal) return true;
  }
  return false;
}

// The next node after `node` in document order within the subtree of `context`, descending only
// into elements (never into entity references, whose children belong to the entity).
xmlNodePtr next_in_subtree(xmlNodePtr node, xmlNodePtr context) {
  if (node->type == XML_ELEMENT_NODE && node->children) return node->children;
  while (node != context && !node->next) node = node->parent;
  return node == context ? nullptr : node->next;
}

std::vector<xmlNodePtr> select_chain(xmlNodePtr context, const ChainSelector& chain,
                                     Matches matches) {
  std::vector<xmlNodePtr> found;
  for (xmlNodePtr node = context->children; node; node = next_in_subtree(node, context)) {
    if (!ends_chain(node, context, chain.names)) continue;
    if (!chain.child.empty() && !has_child_with_text(node, chain.child, chain.value)) continue;
    found.push_back(node);
    if (matches == Matches::first) break;
  }
  return found;
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
  const std::optional<ChainSelector> chain = chain_selector(selector);
  if (!chain) return select_xpath(context, fmt::format(".//{}", selector), matches);
  if (context->type != XML_ELEMENT_NODE && context->type != XML_DOCUMENT_NODE) return {};
  return select_chain(context, *chain, matches);
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
