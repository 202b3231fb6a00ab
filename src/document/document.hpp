#pragma once

#include <libxml/tree.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "document/libxml_errors.hpp"
#include "document/selector.hpp"

namespace pellago {

class Element;

// Told about each change made through Element to the tree of a document it observes
// (Document::observe). Changes to unattached elements and to other documents are not told.
struct EditObserver {
  virtual ~EditObserver() = default;
  // Before the change: the element still holds its old text or attribute value.
  virtual void setting_text(Element element, std::string_view text) = 0;
  virtual void setting_attribute(Element element, const char* name, std::string_view value) = 0;
  // After a node (with its subtree) was linked into the tree.
  virtual void inserted(Element node) = 0;
  // Before a node is unlinked from the tree.
  virtual void removing(Element node) = 0;
};

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
  // The same for a name chain split beforehand (name_chain("rate/timebase")).
  Element first(const Selector& selector) const;
  // Several name chains in one walk of the subtree: element i is what first (all) gives for
  // selectors[i].
  std::vector<Element> first_of(std::span<const Selector> selectors) const;
  std::vector<std::vector<Element>> all_of(std::span<const Selector> selectors) const;
  // Whether this element is `ancestor` or stands in its subtree.
  bool is_within(Element ancestor) const;
  // Whether any child of this element is an element.
  bool holds_elements() const;
  // The first child element named `name` ("*": of any name), or none; all of them, in order; the
  // last child element, or none. Only children are looked at, never deeper.
  Element child(std::string_view name) const;
  std::vector<Element> children(std::string_view name) const;
  Element last_child() const;
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
  // As insert_after, on a line of its own: the blanks and line break before this element, when
  // only they stand there, go before the node too.
  Element insert_after_on_own_line(Element node) const;

  // Building: a new unattached element of this element's document (no namespace or attributes)
  // holding `text` as its one text node (no children for the empty text); the same appended as
  // the last child; a new text node appended as the last child. Each returns what it made. A
  // subtree built unattached and then inserted reaches an observer as one insertion.
  Element create_element(std::string_view name, std::string_view text = {}) const;
  Element append_element(std::string_view name, std::string_view text = {}) const;
  void append_text(std::string_view text) const;

  // Detaches the element with its subtree; it stays a valid, unattached element of its document.
  void remove() const;
  // As remove, with the blanks and line break before the element when only they stand there, so
  // that no empty line is left.
  void remove_line() const;
  // A deep copy (attributes and descendants), unattached, in the same document.
  Element copy() const;

 private:
  xmlNodePtr node_ = nullptr;
};

// Owns a parsed libxml2 tree and every node created for it or detached from it. Move-only.
class Document {
 public:
  // Recovering parse, no network, blank text kept, entities not substituted. A file is read in
  // chunks while the tree is built. A file that cannot be opened or read throws Error with its
  // errno; input from which no document at all can be built throws Error. What was repaired is
  // in recovered_errors(); libxml2 prints nothing.
  static Document parse_file(const std::string& path);
  static Document parse_string(std::string_view markup);

  Document(Document&&) noexcept;
  Document& operator=(Document&&) noexcept;
  ~Document();

  xmlDocPtr get() const noexcept { return doc_.get(); }
  // The errors the parse recovered from; a count of 0 when the input was well-formed.
  const RecoveredErrors& recovered_errors() const noexcept { return recovered_; }

  // Reports every later change to the tree to `observer` (none: stop reporting). The observer
  // must outlive the reporting; an unobserved document pays nothing for it.
  void observe(EditObserver* observer) noexcept;
  Element root() const;

  // Selectors as for Element, evaluated below the document node (the root element included).
  Element first(std::string_view selector) const;
  std::vector<Element> all(std::string_view selector) const;
  Element first_xpath(const std::string& expression) const;

  // A new unattached element: the given name, no namespace, no attributes, no children.
  Element create_element(std::string_view name);

  // libxml2's standard formatted output of the whole document in the document's own encoding:
  // XML declaration, DOCTYPE, root element; indentation only inside elements holding no text node.
  // The bytes go to `sink` in consecutive chunks as they are made; an exception from the sink
  // stops the output and is rethrown. A text, attribute value or comment holding what XML 1.0
  // cannot carry (a control character, bytes that are not UTF-8) throws Error before any output.
  void write(const std::function<void(std::string_view)>& sink) const;
  std::string write() const;

 private:
  struct Deleter {
    void operator()(xmlDocPtr doc) const noexcept;
  };
  Document(xmlDocPtr doc, RecoveredErrors recovered);

  std::unique_ptr<xmlDoc, Deleter> doc_;
  RecoveredErrors recovered_;
};

}  // namespace pellago
