#include "merge/near_names.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>

namespace pellago {

namespace {

struct FreeDeleter {
  void operator()(utf8proc_uint8_t* text) const { std::free(text); }
};

// The text mapped by utf8proc with `options`, or unchanged when it is not valid UTF-8.
std::string mapped(std::string_view text, int options) {
  utf8proc_uint8_t* result = nullptr;
  const utf8proc_ssize_t length = utf8proc_map(
      reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), &result, static_cast<utf8proc_option_t>(options));
  std::unique_ptr<utf8proc_uint8_t, FreeDeleter> owned(result);
  if (length < 0) return std::string(text);
  return std::string(reinterpret_cast<const char*>(result), static_cast<std::size_t>(length));
}

std::string folded(std::string_view text) {
  return mapped(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
}

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

// "101.0" -> "101": how a number cell holding a whole number reads.
std::string_view without_point_zero(std::string_view text) {
  if (text.size() < 3 || !text.ends_with(".0")) return text;
  const std::string_view digits = text.substr(0, text.size() - 2);
  const bool all_digits =
      std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
  return all_digits ? digits : text;
}

std::vector<utf8proc_int32_t> code_points(std::string_view text) {
  std::vector<utf8proc_int32_t> points;
  auto* at = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto left = static_cast<utf8proc_ssize_t>(text.size());
  while (left > 0) {
    utf8proc_int32_t point = 0;
    utf8proc_ssize_t used = utf8proc_iterate(at, left, &point);
    if (used <= 0) {
      point = *at;
      used = 1;
    }
    points.push_back(point);
    at += used;
    left -= used;
  }
  return points;
}

}  // namespace

std::string composed(std::string_view text) {
  return mapped(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE);
}

NearMiss near_miss_reasons(std::string_view typed, std::string_view wanted) {
  NearMiss reasons;
  if (typed == wanted) return reasons;
  const std::string_view typed_core = without_point_zero(trimmed(typed));
  const std::string_view wanted_core = without_point_zero(trimmed(wanted));
  if (folded(typed_core) != folded(wanted_core)) return reasons;
  reasons.blanks = trimmed(typed) != typed || trimmed(wanted) != wanted;
  reasons.number = typed_core != trimmed(typed) || wanted_core != trimmed(wanted);
  const std::string typed_composed = composed(typed_core);
  const std::string wanted_composed = composed(wanted_core);
  reasons.normalisation = typed_composed != typed_core || wanted_composed != wanted_core;
  reasons.letter_case = typed_composed != wanted_composed;
  return reasons;
}

std::string describe(const NearMiss& reasons) {
  std::vector<std::string> parts;
  if (reasons.blanks) parts.emplace_back("blanks at either end");
  if (reasons.letter_case) parts.emplace_back("letter case");
  if (reasons.normalisation) parts.emplace_back("Unicode normalisation (NFC/NFD)");
  if (reasons.number) parts.emplace_back("a number read as \"101.0\"");
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += i + 1 == parts.size() ? " and " : ", ";
    text += parts[i];
  }
  return text;
}

std::string squashed(std::string_view text) {
  std::string kept;
  for (utf8proc_int32_t point : code_points(folded(text))) {
    const utf8proc_category_t category = utf8proc_category(point);
    const bool letter = category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_LO;
    const bool digit = category == UTF8PROC_CATEGORY_ND;
    if (!letter && !digit) continue;
    utf8proc_uint8_t bytes[4];
    const utf8proc_ssize_t length = utf8proc_encode_char(point, bytes);
    kept.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
  }
  return kept;
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
  const std::vector<utf8proc_int32_t> from = code_points(a);
  const std::vector<utf8proc_int32_t> to = code_points(b);
  std::vector<std::size_t> previous(to.size() + 1);
  std::iota(previous.begin(), previous.end(), std::size_t{0});
  std::vector<std::size_t> current(to.size() + 1);
  for (std::size_t i = 1; i <= from.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replace = previous[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, replace});
    }
    std::swap(previous, current);
  }
  return previous[to.size()];
}

std::vector<std::string> closest(std::string_view text, const std::vector<std::string>& candidates,
                                 std::size_t limit) {
  const std::string key = folded(trimmed(text));
  const std::size_t allowed = std::min<std::size_t>(2, code_points(key).size() / 4);
  std::vector<std::pair<std::size_t, std::size_t>> near;  // distance, candidate index
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const std::size_t distance = edit_distance(key, folded(trimmed(candidates[i])));
    if (distance <= allowed) near.emplace_back(distance, i);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (std::size_t i = 0; i < near.size() && names.size() < limit; ++i) {
    if (std::find(names.begin(), names.end(), candidates[near[i].second]) == names.end()) {
      names.push_back(candidates[near[i].second]);
    }
  }
  return names;
}

}  // namespace pellago
