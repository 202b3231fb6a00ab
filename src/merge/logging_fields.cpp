#include "merge/logging_fields.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "error.hpp"
#include "merge/required_element.hpp"

namespace pellago {
namespace {

// every_match: all matching elements are set, none is created.
// first_match: the first match is set; when there is none, a new element is placed next to the
// anchor. required: the first match is set; when there is none, the row cannot be applied.
enum class Which { every_match, first_match, required };
enum class Place { before, after };
enum class Value { cell_text, good_flag };

struct LoggingField {
  std::string_view header;
  Selector selector;
  Which which;
  Value value = Value::cell_text;
  std::string_view new_element = {};
  std::string_view anchor = {};
  Place place = Place::before;
};

// Walked in this order: "Label" creates its element before "Label 2" sets the first label2, and
// "Comment 2" lands between mastercomment4 and a clipcommenta that "Comment 1" just created.
constexpr std::array<LoggingField, 14> kLoggingFields{{
    {"Good", name_chain("logginginfo/good"), Which::every_match, Value::good_flag},
    {"Label", name_chain("labels/label"), Which::first_match, Value::cell_text, "label",
     "labels/label2", Place::before},
    {"Label 2", name_chain("labels/label2"), Which::required},
    {"Description", name_chain("logginginfo/description"), Which::first_match, Value::cell_text,
     "description", "logginginfo/scene", Place::before},
    {"Scene", name_chain("logginginfo/scene"), Which::every_match},
    {"Shot/Take", name_chain("logginginfo/shottake"), Which::every_match},
    {"Angle", name_chain("defaultangle"), Which::first_match, Value::cell_text, "defaultangle",
     "media", Place::after},
    {"Log Note", name_chain("logginginfo/lognote"), Which::every_match},
    {"Master Comment 1", name_chain("comments/mastercomment1"), Which::every_match},
    {"Master Comment 2", name_chain("comments/mastercomment2"), Which::every_match},
    {"Master Comment 3", name_chain("comments/mastercomment3"), Which::every_match},
    {"Master Comment 4", name_chain("comments/mastercomment4"), Which::every_match},
    {"Comment 1", name_chain("comments/clipcommenta"), Which::first_match, Value::cell_text,
     "clipcommenta", "comments/mastercomment4", Place::after},
    {"Comment 2", name_chain("comments/clipcommentb"), Which::first_match, Value::cell_text,
     "clipcommentb", "comments/mastercomment4", Place::after},
}};

// What one walk of the clip looks for: each field's elements, then the one anchor that is no
// field's ("media").
constexpr std::array<Selector, kLoggingFields.size() + 1> kLookups = [] {
  std::array<Selector, kLoggingFields.size() + 1> lookups;
  for (std::size_t i = 0; i < kLoggingFields.size(); ++i) lookups[i] = kLoggingFields[i].selector;
  lookups.back() = name_chain("media");
  return lookups;
}();

// The position in kLookups of a field's anchor.
constexpr std::size_t anchor_lookup(const LoggingField& field) {
  std::size_t i = 0;
  while (i + 1 < kLookups.size() && kLookups[i].text != field.anchor) ++i;
  return i;
}
static_assert(anchor_lookup(kLoggingFields[1]) == 2 && anchor_lookup(kLoggingFields[6]) == 14);

// The elements of one walk that are still in the clip: a field that replaces an element's text
// takes the elements below it out of the tree. Fields only ever add elements that match their
// own selector, so the walk misses nothing a later field looks for.
std::vector<Element> still_in(Element clip, const std::vector<Element>& found) {
  std::vector<Element> in_clip;
  for (Element element : found) {
    if (element.is_within(clip)) in_clip.push_back(element);
  }
  return in_clip;
}

void set_required(Element found, const LoggingField& field, const std::string& text) {
  require_found(found, field.selector.text, fmt::format(" to hold \"{}\"", field.header))
      .set_text(text);
}

void set_or_create(Element found, Element anchor, const LoggingField& field,
                   const std::string& text, Document& document) {
  if (found) {
    found.set_text(text);
    return;
  }
  if (!anchor) {
    throw Error(fmt::format("no {} element for \"{}\", and no {} element to insert one {}",
                            element_path(field.selector.text), field.header,
                            element_path(field.anchor),
                            field.place == Place::before ? "before" : "after"));
  }
  Element created = document.create_element(field.new_element);
  created.set_text(text);
  if (field.place == Place::before) {
    anchor.insert_before(created);
  } else {
    anchor.insert_after(created);
  }
}

Element first_or_none(const std::vector<Element>& elements) {
  return elements.empty() ? Element() : elements.front();
}

}  // namespace

std::vector<std::string_view> logging_field_headers() {
  std::vector<std::string_view> headers;
  for (const LoggingField& field : kLoggingFields) headers.push_back(field.header);
  return headers;
}

std::vector<LoggingFieldElement> logging_field_elements() {
  std::vector<LoggingFieldElement> elements;
  for (const LoggingField& field : kLoggingFields) {
    elements.push_back({field.header, field.selector.text, field.which != Which::every_match});
  }
  return elements;
}

std::string good_flag(std::string_view cell) {
  std::string lowered(cell);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lowered == "yes" || lowered == "y" ? "TRUE" : "FALSE";
}

void apply_logging_fields(Element clip, const LogRow& row, Document& document) {
  const std::vector<std::vector<Element>> found = clip.all_of(kLookups);
  for (std::size_t i = 0; i < kLoggingFields.size(); ++i) {
    const LoggingField& field = kLoggingFields[i];
    const std::string* cell = row.field(field.header);
    if (cell == nullptr) continue;
    const std::string text = field.value == Value::good_flag ? good_flag(*cell) : *cell;
    const std::vector<Element> elements = still_in(clip, found[i]);
    switch (field.which) {
      case Which::every_match:
        for (Element element : elements) element.set_text(text);
        break;
      case Which::first_match:
        set_or_create(first_or_none(elements),
                      first_or_none(still_in(clip, found[anchor_lookup(field)])), field, text,
                      document);
        break;
      case Which::required:
        set_required(first_or_none(elements), field, text);
        break;
    }
  }
}

}  // namespace pellago
