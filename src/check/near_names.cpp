#include "check/near_names.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "timecode/trimmed.hpp"

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
  if (near_miss_key(typed) != near_miss_key(wanted)) return reasons;
  const std::string_view typed_core = without_point_zero(trimmed(typed));
  const std::string_view wanted_core = without_point_zero(trimmed(wanted));
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

namespace {

using Points = std::vector<utf8proc_int32_t>;

// Optimal string alignment distance by dynamic programming, for names longer than a machine word.
std::size_t table_distance(const Points& from, const Points& to) {
  std::vector<std::vector<std::size_t>> d(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) d[i][0] = i;
  for (std::size_t j = 0; j <= to.size(); ++j) d[0][j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replace = d[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, replace});
      if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
      }
    }
  }
  return d[from.size()][to.size()];
}

// For each code point of a pattern of at most 64, the bits of the positions holding it.
struct PatternBits {
  explicit PatternBits(const Points& pattern) : length(pattern.size()) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
      const std::uint64_t bit = std::uint64_t{1} << i;
      if (pattern[i] >= 0 && pattern[i] < 128) {
        ascii[static_cast<std::size_t>(pattern[i])] |= bit;
      } else {
        other[pattern[i]] |= bit;
      }
    }
  }
  std::uint64_t of(utf8proc_int32_t point) const {
    if (point >= 0 && point < 128) return ascii[static_cast<std::size_t>(point)];
    const auto found = other.find(point);
    return found == other.end() ? 0 : found->second;
  }

  std::size_t length;
  std::array<std::uint64_t, 128> ascii{};
  std::unordered_map<utf8proc_int32_t, std::uint64_t> other;
};

// The same distance a word of bits at a time (Hyyro's bit-vector form of the table, with
// transpositions): one pass over `text`, each column of the table in a few word operations.
std::size_t bit_distance(const PatternBits& pattern, const Points& text) {
  if (pattern.length == 0) return text.size();
  const std::uint64_t last = std::uint64_t{1} << (pattern.length - 1);
  std::uint64_t vertical_up = ~std::uint64_t{0};
  std::uint64_t vertical_down = 0;
  std::uint64_t diagonal = 0;
  std::uint64_t previous_match = 0;
  std::size_t distance = pattern.length;
  for (utf8proc_int32_t point : text) {
    const std::uint64_t match = pattern.of(point);
    const std::uint64_t swapped = ((~diagonal & match) << 1) & previous_match;
    diagonal =
        (((match & vertical_up) + vertical_up) ^ vertical_up) | match | vertical_down | swapped;
    std::uint64_t horizontal_up = vertical_down | ~(diagonal | vertical_up);
    std::uint64_t horizontal_down = diagonal & vertical_up;
    if (horizontal_up & last) ++distance;
    if (horizontal_down & last) --distance;
    horizontal_up = (horizontal_up << 1) | 1;
    horizontal_down <<= 1;
    vertical_up = horizontal_down | ~(diagonal | horizontal_up);
    vertical_down = horizontal_up & diagonal;
    previous_match = match;
  }
  return distance;
}

// A text to measure others against: a word of bits at a time when it fits in one, else by table.
struct Pattern {
  explicit Pattern(Points text) : points(std::move(text)) {
    if (points.size() <= 64) bits.emplace(points);
  }
  std::size_t distance_to(const Points& text) const {
    return bits ? bit_distance(*bits, text) : table_distance(points, text);
  }

  Points points;
  std::optional<PatternBits> bits;
};

}  // namespace

std::size_t edit_distance(std::string_view a, std::string_view b) {
  return Pattern(code_points(a)).distance_to(code_points(b));
}

NameIndex index_names(const std::vector<std::string>& names) {
  NameIndex index;
  std::unordered_set<std::string_view> seen;
  for (const std::string& name : names) {
    if (!seen.insert(name).second) continue;
    Points points = code_points(folded(trimmed(name)));
    index.by_length[points.size()].push_back(index.names.size());
    index.names.push_back(name);
    index.folded.push_back(std::move(points));
  }
  return index;
}

namespace {

// The folded text a search looks for and how far from it a name may be.
struct Search {
  explicit Search(std::string_view text)
      : key(code_points(folded(trimmed(text)))),
        allowed(std::min<std::size_t>(2, key.points.size() / 4)) {}

  // Calls visit(names) for each bucket of names whose length is near enough to the key's to be
  // compared with it.
  template <typename Visit>
  void each_bucket(const NameIndex& index, Visit visit) const {
    const std::size_t length = key.points.size();
    const std::size_t shortest = length - std::min(length, allowed);
    const auto end = index.by_length.upper_bound(length + allowed);
    for (auto bucket = index.by_length.lower_bound(shortest); bucket != end; ++bucket) {
      visit(bucket->second);
    }
  }

  Pattern key;
  std::size_t allowed;
};

}  // namespace

std::size_t comparisons(std::string_view text, const NameIndex& index) {
  std::size_t count = 0;
  Search(text).each_bucket(index,
                           [&](const std::vector<std::size_t>& names) { count += names.size(); });
  return count;
}

std::vector<std::string> closest(std::string_view text, const NameIndex& index, std::size_t limit) {
  const Search search(text);
  std::vector<std::pair<std::size_t, std::size_t>> near;  // distance, name index
  search.each_bucket(index, [&](const std::vector<std::size_t>& names) {
    for (std::size_t i : names) {
      const std::size_t d = search.key.distance_to(index.folded[i]);
      if (d <= search.allowed) near.emplace_back(d, i);
    }
  });
  std::sort(near.begin(), near.end());
  std::vector<std::string> names;
  for (std::size_t i = 0; i < near.size() && names.size() < limit; ++i) {
    names.push_back(index.names[near[i].second]);
  }
  return names;
}

std::vector<std::string> closest(std::string_view text, const std::vector<std::string>& candidates,
                                 std::size_t limit) {
  return closest(text, index_names(candidates), limit);
}

std::string near_miss_key(std::string_view name) {
  return folded(without_point_zero(trimmed(name)));
}

}  // namespace pellago
