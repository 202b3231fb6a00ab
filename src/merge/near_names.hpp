#pragma once

#include <cstddef>
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

// Levenshtein distance over Unicode code points (bytes for invalid UTF-8).
std::size_t edit_distance(std::string_view a, std::string_view b);

// The candidates within a small edit distance of `text` (at most 2, and at most a quarter of its
// length), closest first, at most `limit` of them; ties keep the candidates' order.
std::vector<std::string> closest(std::string_view text, const std::vector<std::string>& candidates,
                                 std::size_t limit);

}  // namespace pellago
