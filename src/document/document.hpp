#pragma once

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellago {

struct Fragment;

// A non-owning handle to an element of a Document: pointer-sized, free to copy, never frees
// anything. An empty handle (no element) converts to false. Handles stay valid while the document
// that holds the element lives, whether or not the element is attached to the tree.
//
// Selectors (first, all): a name, or names joined by "/" ("rate/timebase"), matches every element
// at any depth below this one (never this one) that ends such a chain of parent-to-child steps,
// like the XPath ".//rate/timebase"; results in document order. The chain may end in a condition
// on a child element's text, `[name="value"]` or `[name='value']`, kept as in XPath
// ("timecode[source=\"aux1\"]": a timecode with a source child whose text is aux1). A selector
// that starts with "/", "./" or "..", or is ".", is an XPath expression evaluated with this
// element as context node.
class Element {
 public:
  Element() = default;
  explicit Element(xmlNodePtr node) noexcept : node_(node) {}

  explicit operator bool() const noexcept { return node_ != nullptr; }
  xmlNodePtr node() const noexcept { return node_; }
  friend bool operator==(Element, Element) = default;

  std::string name() const;

  // First match in document order, or an empty handle.
  Element first(std::string_view selector) const;
  // Every match, in document order.
  std::vector<Element> all(std::string_view selector) const;
  // First node of an XPath expression evaluated with this element as context node.
  Element first_xpath(const std::string& expression) const;

  // All text below the element (text and CDATA at every depth), concatenated, unchanged.
  std::string text() const;
  // Replaces every child with one text node holding exactly `text`; the empty text leaves the
  // element without children.
  void set_text(std::string_view text) const;

  std::optional<std::string> attribute(const char* name) const;
  void set_attribute(const char* name, std::string_view value) const;

  // The node that holds this element: an element, or an empty handle for the root element and for
  // detached elements.
  Element parent() const;

  // Insertion. An attached node is moved; a node of another document is copied into this one.
  // No whitespace is added. Each returns the node that is now in the tree.
  Element insert_before(Element node) const;
  Element insert_after(Element node) const;
  Element append_child(Element node) const;
  // A fragment inserts its top-level nodes in their order; the result is the first of them.
  Element insert_after(const Fragment& fragment) const;
  Element append_child(const Fragment& fragment) const;

  // Building in place, in this element's document: a new element (no namespace or attributes)
  // holding `text` as its one text node (no children for the empty text), as the last child, or
  // as the next sibling; and a new text node as the last child. Each returns what it made.
  Element append_element(std::string_view name, std::string_view text = {}) const;
  Element insert_element_after(std::string_view name, std::string_view text = {}) const;
  void append_text(std::string_view text) const;

  // Detaches the element with its subtree; it stays a valid, unattached element of its document.
  void remove() const;
  // A deep copy (attributes and descendants), unattached, in the same document.
  Element copy() const;

 private:
  xmlNodePtr node_ = nullptr;
};

// Owns a parsed libxml2 tree and every node created for it or detached from it. Move-only.
class Document {
 public:
  // Recovering parse, no network, blank text kept, entities not substituted. A file that cannot
  // be opened or read throws Error with its errno; so does input from which no document at all
  // can be built.
  static Document parse_file(const std::string& path);
  static Document parse_string(std::string_view markup);

  Document(Document&&) noexcept;
  Document& operator=(Document&&) noexcept;
  ~Document();

  xmlDocPtr get() const noexcept { return doc_.get(); }
  Element root() const;

  // Selectors as for Element, evaluated below the document node (the root element included).
  Element first(std::string_view selector) const;
  std::vector<Element> all(std::string_view selector) const;
  Element first_xpath(const std::string& expression) const;

  // A new unattached element: the given name, no namespace, no attributes, no children.
  Element create_element(std::string_view name);

  // libxml2's standard formatted output of the whole document in the document's own encoding:
  // XML declaration, DOCTYPE, root element; indentation only inside elements holding no text node.
  std::string write() const;

 private:
  struct Deleter {
    void operator()(xmlDocPtr doc) const noexcept;
  };
  explicit Document(xmlDocPtr doc);

  std::unique_ptr<xmlDoc, Deleter> doc_;
};

// Markup parsed as the content of an otherwise empty root element of a private document; the
// fragment's nodes are that root's children, in order.
struct Fragment {
  static Fragment parse(std::string_view markup);

  Document document;
  std::vector<Element> nodes;
};

}  // namespace pellago
