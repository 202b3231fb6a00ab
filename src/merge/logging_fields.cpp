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
  std::string_view selector;
  Which which;
  Value value = Value::cell_text;
  std::string_view new_element = {};
  std::string_view anchor = {};
  Place place = Place::before;
};

// Walked in this order: "Label" creates its element before "Label 2" sets the first label2, and
// "Comment 2" lands between mastercomment4 and a clipcommenta that "Comment 1" just created.
constexpr std::array<LoggingField, 14> kLoggingFields{{
    {"Good", "logginginfo/good", Which::every_match, Value::good_flag},
    {"Label", "labels/label", Which::first_match, Value::cell_text, "label", "labels/label2",
     Place::before},
    {"Label 2", "labels/label2", Which::required},
    {"Description", "logginginfo/description", Which::first_match, Value::cell_text, "description",
     "logginginfo/scene", Place::before},
    {"Scene", "logginginfo/scene", Which::every_match},
    {"Shot/Take", "logginginfo/shottake", Which::every_match},
    {"Angle", "defaultangle", Which::first_match, Value::cell_text, "defaultangle", "media",
     Place::after},
    {"Log Note", "logginginfo/lognote", Which::every_match},
    {"Master Comment 1", "comments/mastercomment1", Which::every_match},
    {"Master Comment 2", "comments/mastercomment2", Which::every_match},
    {"Master Comment 3", "comments/mastercomment3", Which::every_match},
    {"Master Comment 4", "comments/mastercomment4", Which::every_match},
    {"Comment 1", "comments/clipcommenta", Which::first_match, Value::cell_text, "clipcommenta",
     "comments/mastercomment4", Place::after},
    {"Comment 2", "comments/clipcommentb", Which::first_match, Value::cell_text, "clipcommentb",
     "comments/mastercomment4", Place::after},
}};

void set_every_match(Element clip, const LoggingField& field, const std::string& text) {
  for (Element element : clip.all(field.selector)) element.set_text(text);
}

void set_required(Element clip, const LoggingField& field, const std::string& text) {
  required(clip, field.selector, fmt::format(" to hold \"{}\"", field.header)).set_text(text);
}

void set_or_create(Element clip, const LoggingField& field, const std::string& text,
                   Document& document) {
  if (Element element = clip.first(field.selector)) {
    element.set_text(text);
    return;
  }
  Element anchor = clip.first(field.anchor);
  if (!anchor) {
    throw Error(fmt::format("no {} element for \"{}\", and no {} element to insert one {}",
                            element_path(field.selector), field.header, element_path(field.anchor),
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

}  // namespace

std::vector<std::string_view> logging_field_headers() {
  std::vector<std::string_view> headers;
  for (const LoggingField& field : kLoggingFields) headers.push_back(field.header);
  return headers;
}

std::vector<LoggingFieldElement> logging_field_elements() {
  std::vector<LoggingFieldElement> elements;
  for (const LoggingField& field : kLoggingFields) {
    elements.push_back({field.header, field.selector, field.which != Which::every_match});
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
  for (const LoggingField& field : kLoggingFields) {
    const std::string* cell = row.field(field.header);
    if (cell == nullptr) continue;
    const std::string text = field.value == Value::good_flag ? good_flag(*cell) : *cell;
    switch (field.which) {
      case Which::every_match:
        set_every_match(clip, field, text);
        break;
      case Which::first_match:
        set_or_create(clip, field, text, document);
        break;
      case Which::required:
        set_required(clip, field, text);
        break;
    }
  }
}

}  // namespace pellago
