#include <fmt/format.h>
#include <libxml/entities.h>
#include <libxml/parserInternals.h>

#include "document/document.hpp"
#include "document/select.hpp"
#include "document/unattached_nodes.hpp"
#include "error.hpp"

namespace pellago {

namespace {

const char* text_of(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

// Every operation on an empty handle (a lookup that found nothing) fails here, with what it
// was meant to do, instead of dereferencing nothing.
xmlNodePtr require(xmlNodePtr node, const char* action) {
  if (!node) throw Error(fmt::format("cannot {}: the element is missing", action));
  return node;
}

xmlNodePtr require_parent(xmlNodePtr node) {
  if (!node->parent) {
    throw Error(fmt::format("cannot insert next to <{}>: it is not in the document tree",
                            text_of(node->name)));
  }
  return node->parent;
}

bool is_ancestor_or_self(xmlNodePtr ancestor, xmlNodePtr node) {
  for (; node; node = node->parent) {
    if (node == ancestor) return true;
  }
  return false;
}

std::vector<Element> to_elements(const std::vector<xmlNodePtr>& nodes) {
  return {nodes.begin(), nodes.end()};
}

// The node to link under `parent` next to `anchor`: a node of another document is copied into
// the parent's document; a node of the same document is detached from wherever it is.
xmlNodePtr take_over(xmlNodePtr node, xmlNodePtr parent, xmlNodePtr anchor) {
  require(node, "insert a node");
  if (node->doc != parent->doc) {
    xmlNodePtr copy = xmlDocCopyNode(node, parent->doc, 1);
    if (!copy) throw Error(fmt::format("cannot copy <{}>: out of memory", text_of(node->name)));
    return copy;
  }
  if (node == anchor || is_ancestor_or_self(node, parent)) {
    throw Error(fmt::format("cannot insert <{}> into itself", text_of(node->name)));
  }
  xmlUnlinkNode(node);
  return node;
}

// Links `node` under `parent` between `prev` and `next` (either may be null). libxml2's own
// xmlAdd* functions merge a text node into an adjacent text node and free it, which would
// reorder inserted nodes and leave dangling handles; this never merges.
xmlNodePtr link(xmlNodePtr node, xmlNodePtr parent, xmlNodePtr prev, xmlNodePtr next) {
  node->parent = parent;
  node->prev = prev;
  node->next = next;
  (prev ? prev->next : parent->children) = node;
  (next ? next->prev : parent->last) = node;
  return node;
}

xmlNodePtr new_text(xmlDocPtr doc, std::string_view text) {
  xmlNodePtr node = xmlNewDocTextLen(doc, reinterpret_cast<const xmlChar*>(text.data()),
                                     static_cast<int>(text.size()));
  if (!node) throw Error("cannot create a text node: out of memory");
  return node;
}

// A new element holding `text` (nothing for the empty text), not yet linked anywhere.
xmlNodePtr new_element(xmlDocPtr doc, std::string_view name, std::string_view text) {
  const std::string name_text(name);
  xmlNodePtr node =
      xmlNewDocNode(doc, nullptr, reinterpret_cast<const xmlChar*>(name_text.c_str()), nullptr);
  if (!node) throw Error(fmt::format("cannot create the element <{}>: out of memory", name));
  if (!text.empty()) {
    try {
      link(new_text(doc, text), node, nullptr, nullptr);
    } catch (...) {
      xmlFreeNode(node);
      throw;
    }
  }
  return node;
}

// The observer of the node's document when the node is in that document's tree.
EditObserver* observer_of_tree(xmlNodePtr node) {
  EditObserver* observer = observer_of(node->doc);
  if (!observer) return nullptr;
  for (xmlNodePtr up = node; up; up = up->parent) {
    if (up->type == XML_DOCUMENT_NODE) return observer;
  }
  return nullptr;
}

Element linked(xmlNodePtr node) {
  if (EditObserver* observer = observer_of_tree(node)) observer->inserted(Element(node));
  return Element(node);
}

// The text node before `node` when it holds only blanks and at least one line break.
xmlNodePtr line_start_before(xmlNodePtr node) {
  const xmlNodePtr before = node->prev;
  if (!before || !xmlNodeIsText(before) || !xmlIsBlankNode(before)) return nullptr;
  return xmlStrchr(before->content, '\n') ? before : nullptr;
}

}  // namespace

std::string Element::name() const {
  return text_of(require(node_, "read the name of an element")->name);
}

Element Element::first(std::string_view selector) const {
  auto found = select(require(node_, "search an element"), selector, Matches::first);
  return found.empty() ? Element() : Element(found.front());
}

std::vector<Element> Element::all(std::string_view selector) const {
  return to_elements(select(require(node_, "search an element"), selector, Matches::all));
}

Element Element::first(const Selector& selector) const {
  auto found = select(require(node_, "search an element"), selector, Matches::first);
  return found.empty() ? Element() : Element(found.front());
}

std::vector<Element> Element::first_of(std::span<const Selector> selectors) const {
  std::vector<Element> first(selectors.size());
  select_each(require(node_, "search an element"), selectors, Matches::first,
              [&first](std::size_t i, xmlNodePtr node) { first[i] = Element(node); });
  return first;
}

std::vector<std::vector<Element>> Element::all_of(std::span<const Selector> selectors) const {
  std::vector<std::vector<Element>> all(selectors.size());
  select_each(require(node_, "search an element"), selectors, Matches::all,
              [&all](std::size_t i, xmlNodePtr node) { all[i].emplace_back(node); });
  return all;
}

bool Element::is_within(Element ancestor) const {
  return is_ancestor_or_self(ancestor.node_, require(node_, "find where an element stands"));
}

bool Element::holds_elements() const {
  return xmlFirstElementChild(require(node_, "look into an element")) != nullptr;
}

namespace {

bool is_named(xmlNodePtr node, std::string_view name) {
  return name == "*" || text_of(node->name) == name;
}

}  // namespace

Element Element::child(std::string_view name) const {
  for (xmlNodePtr node = xmlFirstElementChild(require(node_, "look into an element")); node;
       node = xmlNextElementSibling(node)) {
    if (is_named(node, name)) return Element(node);
  }
  return Element();
}

std::vector<Element> Element::children(std::string_view name) const {
  std::vector<Element> found;
  for (xmlNodePtr node = xmlFirstElementChild(require(node_, "look into an element")); node;
       node = xmlNextElementSibling(node)) {
    if (is_named(node, name)) found.emplace_back(node);
  }
  return found;
}

Element Element::last_child() const {
  xmlNodePtr last = xmlLastElementChild(require(node_, "look into an element"));
  return last ? Element(last) : Element();
}

Element Element::first_xpath(const std::string& expression) const {
  auto found = select_xpath(require(node_, "search an element"), expression, Matches::first);
  return found.empty() ? Element() : Element(found.front());
}

namespace {

// Collects the text below a node, entity references expanded, and refuses to build more than
// kMaxTextBytes of it, to visit more than kMaxTextNodes nodes or to go deeper than kMaxDepth: a
// few nested entity definitions would otherwise expand a small file into gigabytes.
class TextReader {
 public:
  explicit TextReader(xmlNodePtr element) : element_(element) {}

  std::string read() {
    append_children(element_);
    return std::move(text_);
  }

 private:
  void append_children(xmlNodePtr node) {
    if (++depth_ > kMaxDepth) refuse();
    for (xmlNodePtr child = node->children; child; child = child->next) append(child);
    --depth_;
  }

  void append(xmlNodePtr node) {
    if (++visited_ > kMaxTextNodes) refuse();
    switch (node->type) {
      case XML_TEXT_NODE:
      case XML_CDATA_SECTION_NODE:
        if (node->content) {
          const std::string_view content = text_of(node->content);
          if (content.size() > kMaxTextBytes - text_.size()) refuse();
          text_ += content;
        }
        break;
      case XML_ELEMENT_NODE:
        append_children(node);
        break;
      case XML_ENTITY_REF_NODE:
        if (xmlEntityPtr entity = xmlGetDocEntity(node->doc, node->name)) {
          append_children(reinterpret_cast<xmlNodePtr>(entity));
        }
        break;
      default:
        break;
    }
  }

  [[noreturn]] void refuse() const {
    throw Error(
        fmt::format("cannot read the text of <{}>: its entity references expand to more "
                    "than {} bytes, {} nodes or {} levels",
                    text_of(element_->name), kMaxTextBytes, kMaxTextNodes, kMaxDepth));
  }

  static constexpr std::size_t kMaxTextBytes = 10'000'000;
  static constexpr std::size_t kMaxTextNodes = 1'000'000;
  static constexpr int kMaxDepth = 1'000;

  xmlNodePtr element_;
  std::string text_;
  std::size_t visited_ = 0;
  int depth_ = 0;
};

}  // namespace

std::string Element::text() const {
  return TextReader(require(node_, "read the text of an element")).read();
}

// The replaced children are detached, not freed: they stay unattached nodes of the document, so a
// handle to one of them never dangles. A lone text child takes the new text in place instead,
// which saves a node for each text set.
void Element::set_text(std::string_view text) const {
  require(node_, "set the text of an element");
  if (EditObserver* observer = observer_of_tree(node_)) observer->setting_text(*this, text);
  xmlNodePtr only = node_->children;
  if (!text.empty() && only && !only->next && only->type == XML_TEXT_NODE &&
      only->name == xmlStringText) {
    xmlNodeSetContentLen(only, reinterpret_cast<const xmlChar*>(text.data()),
                         static_cast<int>(text.size()));
    if (!only->content) throw Error("cannot set the text of an element: out of memory");
    return;
  }
  while (xmlNodePtr child = node_->children) {
    xmlUnlinkNode(child);
    track_unattached(child);
  }
  if (!text.empty()) link(new_text(node_->doc, text), node_, nullptr, nullptr);
}

std::optional<std::string> Element::attribute(const char* name) const {
  xmlChar* value =
      xmlGetProp(require(node_, "read an attribute"), reinterpret_cast<const xmlChar*>(name));
  if (!value) return std::nullopt;
  std::string text = text_of(value);
  xmlFree(value);
  return text;
}

void Element::set_attribute(const char* name, std::string_view value) const {
  const std::string text(value);
  if (EditObserver* observer = observer_of_tree(require(node_, "set an attribute"))) {
    observer->setting_attribute(*this, name, value);
  }
  if (!xmlSetProp(node_, reinterpret_cast<const xmlChar*>(name),
                  reinterpret_cast<const xmlChar*>(text.c_str()))) {
    throw Error(fmt::format("cannot set the attribute \"{}\" of <{}>", name, text_of(node_->name)));
  }
}

Element Element::parent() const {
  xmlNodePtr parent = require(node_, "find the parent of an element")->parent;
  return parent && parent->type == XML_ELEMENT_NODE ? Element(parent) : Element();
}

Element Element::insert_before(Element node) const {
  xmlNodePtr parent = require_parent(require(node_, "insert before an element"));
  xmlNodePtr taken = take_over(node.node_, parent, node_);
  return linked(link(taken, parent, node_->prev, node_));
}

Element Element::insert_after(Element node) const {
  xmlNodePtr parent = require_parent(require(node_, "insert after an element"));
  xmlNodePtr taken = take_over(node.node_, parent, node_);
  return linked(link(taken, parent, node_, node_->next));
}

Element Element::insert_after_on_own_line(Element node) const {
  if (const xmlNodePtr before = line_start_before(require(node_, "insert after an element"))) {
    const std::string indent = text_of(before->content);
    link(new_text(node_->doc, indent), require_parent(node_), node_, node_->next);
    return Element(node_->next).insert_after(node);
  }
  return insert_after(node);
}

Element Element::append_child(Element node) const {
  require(node_, "append to an element");
  if (node_->type != XML_ELEMENT_NODE) {
    throw Error(fmt::format("cannot append to a {} node: only elements hold children",
                            text_of(node_->name)));
  }
  xmlNodePtr taken = take_over(node.node_, node_, node_);
  return linked(link(taken, node_, node_->last, nullptr));
}

Element Element::create_element(std::string_view name, std::string_view text) const {
  xmlNodePtr node = new_element(require(node_, "create an element")->doc, name, text);
  track_unattached(node);
  return Element(node);
}

Element Element::append_element(std::string_view name, std::string_view text) const {
  require(node_, "append to an element");
  return linked(link(new_element(node_->doc, name, text), node_, node_->last, nullptr));
}

void Element::append_text(std::string_view text) const {
  require(node_, "append to an element");
  linked(link(new_text(node_->doc, text), node_, node_->last, nullptr));
}

void Element::remove() const {
  if (!require(node_, "remove an element")->parent) return;
  if (EditObserver* observer = observer_of_tree(node_)) observer->removing(*this);
  xmlUnlinkNode(node_);
  track_unattached(node_);
}

void Element::remove_line() const {
  if (const xmlNodePtr before = line_start_before(require(node_, "remove an element"))) {
    xmlUnlinkNode(before);
    xmlFreeNode(before);
  }
  remove();
}

Element Element::copy() const {
  xmlNodePtr copy = xmlDocCopyNode(require(node_, "copy an element"), node_->doc, 1);
  if (!copy) throw Error(fmt::format("cannot copy <{}>: out of memory", text_of(node_->name)));
  track_unattached(copy);
  return Element(copy);
}

}  // namespace pellago
