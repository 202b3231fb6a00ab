#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pellago {

// What sets two names apart when they are equal once these are set aside (near_miss_reasons).
struct NearMiss {
  bool blanks = false;         // blanks at either end
  bool number = false;         // a number cell's ".0" ("101.0" for 101)
  bool letter_case = false;    // letter case (Unicode case folding)
  bool normalisation = false;  // Unicode normalisation: composed (NFC) against decomposed (NFD)

  bool any() const { return blanks || number || letter_case || normalisation; }
};

// Why `typed` differs from `wanted`, when it differs only in the ways NearMiss lists; all false
// when the two differ in anything else (or not at all).
NearMiss near_miss_reasons(std::string_view typed, std::string_view wanted);

// "blanks at either end and letter case": the reasons in words.
std::string describe(const NearMiss& reasons);

// Text in Unicode normalisation form C; invalid UTF-8 comes back unchanged.
std::string composed(std::string_view text);

// Case-folded, composed text with only its letters and digits kept: "Shot / Take" -> "shottake".
std::string squashed(std::string_view text);

// Edits that turn a into b: insertions, deletions, substitutions and swaps of neighbours, over
// Unicode code points (bytes for invalid UTF-8).
std::size_t edit_distance(std::string_view a, std::string_view b);

// Candidate names made ready for many closest() searches: each distinct name once, in first-seen
// order, with its trimmed, case-folded code points.
struct NameIndex {
  std::vector<std::string> names;
  std::vector<std::vector<std::int32_t>> folded;
  std::map<std::size_t, std::vector<std::size_t>> by_length;  // positions in names, by length
};
NameIndex index_names(const std::vector<std::string>& names);

// How many names of the index closest(text, index, ...) compares with the text: those of about
// its length.
std::size_t comparisons(std::string_view text, const NameIndex& index);

// The candidates within a small edit distance of `text` (at most 2, and at most a quarter of its
// length), closest first, at most `limit` of them; ties keep the candidates' order.
std::vector<std::string> closest(std::string_view text, const NameIndex& index, std::size_t limit);
std::vector<std::string> closest(std::string_view text, const std::vector<std::string>& candidates,
                                 std::size_t limit);

// What is left of a name once blanks at either end, letter case, normalisation and a number
// cell's ".0" are set aside: two names near_miss_reasons relates have the same key.
std::string near_miss_key(std::string_view name);

}  // namespace pellago
