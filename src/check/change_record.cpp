#include "check/change_record.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace pellago {

namespace {

// Each element that holds no element, below and including `node`, and each attribute, as
// (path below node, text); the path is empty for node itself.
void collect_leaves(xmlNodePtr node, const std::string& path,
                    std::vector<std::pair<std::string, std::string>>& leaves) {
  const Element element(node);
  for (xmlAttrPtr attribute = node->properties; attribute; attribute = attribute->next) {
    const char* name = reinterpret_cast<const char*>(attribute->name);
    leaves.emplace_back(path.empty() ? fmt::format("@{}", name) : fmt::format("{}/@{}", path, name),
                        element.attribute(name).value_or(""));
  }
  bool holds_element = false;
  for (xmlNodePtr child = node->children; child; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    holds_element = true;
    const std::string name = reinterpret_cast<const char*>(child->name);
    collect_leaves(child, path.empty() ? name : path + "/" + name, leaves);
  }
  if (!holds_element) leaves.emplace_back(path, element.text());
}

std::vector<std::pair<std::string, std::string>> leaves_of(Element element) {
  std::vector<std::pair<std::string, std::string>> leaves;
  collect_leaves(element.node(), "", leaves);
  return leaves;
}

bool is_clip(xmlNodePtr node) {
  return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, BAD_CAST "clip");
}

// The nearest clip element holding `node` (not node itself), or none.
xmlNodePtr enclosing_clip(xmlNodePtr node) {
  for (xmlNodePtr up = node->parent; up; up = up->parent) {
    if (is_clip(up)) return up;
  }
  return nullptr;
}

// Path of `node` from its nearest enclosing clip, or from the root element when no clip holds it.
std::string path_of(xmlNodePtr node) {
  std::string path;
  for (xmlNodePtr at = node; at && at->type == XML_ELEMENT_NODE && !is_clip(at); at = at->parent) {
    const std::string name = reinterpret_cast<const char*>(at->name);
    path = path.empty() ? name : name + "/" + path;
  }
  return path;
}

}  // namespace

void ChangeRecord::sheet_read(const Workbook&, const std::vector<Cell>&,
                              const std::vector<LogRow>& rows) {
  rows_ = &rows;
}

void ChangeRecord::document_read(Document& document, const std::string&) { document.observe(this); }

void ChangeRecord::row_started(const ClipMatch& match, std::size_t j) {
  record_copies(match);
  row_ = (*rows_)[match.rows[j]].sheet_row;
  clip_name_ = match.name;
}

std::optional<ClipRef> ChangeRecord::clip_of(Element element) const {
  xmlNodePtr clip = is_clip(element.node()) ? element.node() : enclosing_clip(element.node());
  if (!clip) return std::nullopt;
  const Element found(clip);
  std::string name = clip_name_ ? *clip_name_ : std::string();
  if (!clip_name_) {
    if (Element name_element = found.first("name")) name = name_element.text();
  }
  return ClipRef{std::move(name), found.attribute("id")};
}

bool ChangeRecord::in_copy_being_made(Element element) const {
  for (xmlNodePtr up = element.node(); up; up = up->parent) {
    if (std::find(copies_.begin(), copies_.end(), up) != copies_.end()) return true;
  }
  return false;
}

void ChangeRecord::record(Change change) { changes_.push_back(std::move(change)); }

// The copies appended for a clip's further rows, once complete: each with its own row.
void ChangeRecord::record_copies(const ClipMatch& match) {
  if (copies_.empty()) return;
  for (std::size_t j = 0; j < match.rows.size(); ++j) {
    if (match.copy_numbers[j] == 0) continue;
    const Element copy = match.target(j);
    if (std::find(copies_.begin(), copies_.end(), copy.node()) == copies_.end()) continue;
    record({.kind = ChangeKind::subclip_made,
            .row = (*rows_)[match.rows[j]].sheet_row,
            .clip = ClipRef{match.name, copy.attribute("id")},
            .element = "clip",
            .content = leaves_of(copy)});
  }
  copies_.clear();
}

void ChangeRecord::setting_text(Element element, std::string_view text) {
  if (in_copy_being_made(element)) return;
  std::string old_text = element.text();
  if (old_text == text) return;
  record({.kind = ChangeKind::text_set,
          .row = row_,
          .clip = clip_of(element),
          .element = path_of(element.node()),
          .old_text = std::move(old_text),
          .new_text = std::string(text)});
}

void ChangeRecord::setting_attribute(Element element, const char* name, std::string_view value) {
  if (in_copy_being_made(element)) return;
  std::optional<std::string> old_text = element.attribute(name);
  if (old_text == value) return;
  const std::string path = path_of(element.node());
  record({.kind = ChangeKind::attribute_set,
          .row = row_,
          .clip = clip_of(element),
          .element = path.empty() ? fmt::format("@{}", name) : fmt::format("{}/@{}", path, name),
          .old_text = std::move(old_text),
          .new_text = std::string(value)});
}

void ChangeRecord::inserted(Element node) {
  if (node.node()->type != XML_ELEMENT_NODE || in_copy_being_made(node)) return;
  if (is_clip(node.node())) {
    copies_.push_back(node.node());
    return;
  }
  record({.kind = ChangeKind::added,
          .row = row_,
          .clip = clip_of(node),
          .element = path_of(node.node()),
          .content = leaves_of(node)});
}

void ChangeRecord::removing(Element node) {
  if (node.node()->type != XML_ELEMENT_NODE || in_copy_being_made(node)) return;
  record({.kind = ChangeKind::removed,
          .row = row_,
          .clip = clip_of(node),
          .element = path_of(node.node()),
          .content = leaves_of(node)});
}

}  // namespace pellago
