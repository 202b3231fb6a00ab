#include "merge/logging_fields.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "error.hpp"
#include "merge/clip_layout.hpp"
#include "merge/required_element.hpp"
#include "sheet/columns.hpp"
#include "timecode/trimmed.hpp"

namespace pellago {
namespace {

constexpr bool is_logging_field(const SheetColumn& column) {
  return column.role == ColumnRole::good || column.role == ColumnRole::logging_text;
}

constexpr std::size_t kFieldCount = std::ranges::count_if(kSheetColumns, is_logging_field);

static_assert(std::ranges::all_of(kSheetColumns,
                                  [](const SheetColumn& column) {
                                    return !is_logging_field(column) || has_place(column.element);
                                  }),
              "every logging field's element has its place in a clip");

// The logging columns in table order: "Label" creates its element before "Label 2" sets the first
// label2, and "Comment 2" lands between mastercomment4 and a clipcommenta that "Comment 1" just
// created.
constexpr std::array<SheetColumn, kFieldCount> kLoggingFields = [] {
  std::array<SheetColumn, kFieldCount> fields{};
  std::ranges::copy_if(kSheetColumns, fields.begin(), is_logging_field);
  return fields;
}();

// The anchors that are no field's own elements ("media").
constexpr std::size_t kOtherAnchors = [] {
  std::size_t count = 0;
  for (const SheetColumn& field : kLoggingFields) {
    if (field.write == ElementWrite::first_match &&
        std::ranges::find(kLoggingFields, field.anchor, &SheetColumn::element) ==
            kLoggingFields.end()) {
      ++count;
    }
  }
  return count;
}();

// What one walk of the clip looks for: each field's elements, then the anchors that are no
// field's; and, for each field, where in that list its anchor is.
struct Lookups {
  std::array<Selector, kFieldCount + kOtherAnchors> selectors{};
  std::array<std::size_t, kFieldCount> anchor{};
};

constexpr Lookups kLookups = [] {
  Lookups lookups;
  std::size_t count = 0;
  const auto index_of = [&](std::string_view text) {
    for (std::size_t i = 0; i < count; ++i) {
      if (lookups.selectors[i].text == text) return i;
    }
    lookups.selectors[count] = *parse_selector(text);
    return count++;
  };
  for (const SheetColumn& field : kLoggingFields) index_of(field.element);
  for (std::size_t i = 0; i < kFieldCount; ++i) {
    if (kLoggingFields[i].write == ElementWrite::first_match) {
      lookups.anchor[i] = index_of(kLoggingFields[i].anchor);
    }
  }
  return lookups;
}();

// The elements of one walk that are still in the clip: a field that replaces an element's text
// takes the elements below it out of the tree. Fields only ever add elements that match their
// own selector (and the containers that hold them, which no field selects), so the walk misses
// nothing a later field looks for.
std::vector<Element> still_in(Element clip, const std::vector<Element>& found) {
  std::vector<Element> in_clip;
  for (Element element : found) {
    if (element.is_within(clip)) in_clip.push_back(element);
  }
  return in_clip;
}

void set_required(Element found, const SheetColumn& field, const std::string& text) {
  require_found(found, field.element, fmt::format(" to hold \"{}\"", field.header)).set_text(text);
}

void set_or_create(Element found, Element anchor, const SheetColumn& field, const std::string& text,
                   Document& document) {
  if (found) {
    found.set_text(text);
    return;
  }
  if (!anchor) {
    throw Error(fmt::format("no {} element for \"{}\", and no {} element to insert one {}",
                            element_path(field.element), field.header, element_path(field.anchor),
                            field.placement == Placement::before ? "before" : "after"));
  }
  Element created = document.create_element(field.new_element);
  created.set_text(text);
  if (field.placement == Placement::before) {
    anchor.insert_before(created);
  } else {
    anchor.insert_after(created);
  }
}

Element first_or_none(const std::vector<Element>& elements) {
  return elements.empty() ? Element() : elements.front();
}

}  // namespace

std::optional<std::string> good_flag(std::string_view cell, const Rules& rules) {
  if (!rules.good_words) {
    const std::string lowered = lower_ascii(std::string(cell));
    return lowered == "yes" || lowered == "y" ? "TRUE" : "FALSE";
  }
  // A TRUE or FALSE cell reads "true" or "false", a number cell "1.0" or "0.0".
  static constexpr std::array<std::string_view, 8> kYes{"yes", "y",   "true",   "x",
                                                        "1",   "1.0", "\u2713", "\u2714"};
  static constexpr std::array<std::string_view, 5> kNo{"no", "n", "false", "0", "0.0"};
  const std::string word = lower_ascii(std::string(trimmed(cell)));
  if (std::ranges::find(kYes, word) != kYes.end()) return "TRUE";
  if (std::ranges::find(kNo, word) != kNo.end()) return "FALSE";
  return std::nullopt;
}

void apply_logging_fields(Element clip, const LogRow& row, Document& document, const Rules& rules) {
  const std::vector<std::vector<Element>> found = clip.all_of(kLookups.selectors);
  for (std::size_t i = 0; i < kFieldCount; ++i) {
    const SheetColumn& field = kLoggingFields[i];
    const std::string* cell = row.field(field.header);
    if (cell == nullptr) continue;
    const std::optional<std::string> written =
        field.role == ColumnRole::good ? good_flag(*cell, rules) : *cell;
    if (!written) continue;
    const std::string& text = *written;
    const std::vector<Element> elements = still_in(clip, found[i]);
    if (elements.empty() && rules.create_missing_elements) {
      add_in_place(clip, kLookups.selectors[i], text);
      continue;
    }
    switch (field.write) {
      case ElementWrite::every_match:
        for (Element element : elements) element.set_text(text);
        break;
      case ElementWrite::first_match:
        set_or_create(first_or_none(elements),
                      first_or_none(still_in(clip, found[kLookups.anchor[i]])), field, text,
                      document);
        break;
      case ElementWrite::required:
        set_required(first_or_none(elements), field, text);
        break;
      case ElementWrite::none:
        break;
    }
  }
}

}  // namespace pellago
