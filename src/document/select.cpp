#include "document/select.hpp"

#include <fmt/format.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <memory>

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

bool is_element_named(xmlNodePtr node, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && node->ns == nullptr &&
         name == reinterpret_cast<const char*>(node->name);
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

// The next node after `node` in document order within the subtree of `context`, descending only
// into elements (never into entity references, whose children belong to the entity).
xmlNodePtr next_in_subtree(xmlNodePtr node, xmlNodePtr context) {
  if (node->type == XML_ELEMENT_NODE && node->children) return node->children;
  while (node != context && !node->next) node = node->parent;
  return node == context ? nullptr : node->next;
}

std::vector<xmlNodePtr> select_chain(xmlNodePtr context, const std::vector<std::string_view>& names,
                                     Matches matches) {
  std::vector<xmlNodePtr> found;
  for (xmlNodePtr node = context->children; node; node = next_in_subtree(node, context)) {
    if (!ends_chain(node, context, names)) continue;
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
  std::vector<std::string_view> names = name_chain(selector);
  if (names.empty()) return select_xpath(context, fmt::format(".//{}", selector), matches);
  if (context->type != XML_ELEMENT_NODE && context->type != XML_DOCUMENT_NODE) return {};
  return select_chain(context, names, matches);
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
