#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace pellago {

// A name chain, split once: "rate/timebase" is the names {"rate", "timebase"}; with a condition
// on a child's text at the end, "timecode[source=\"aux1\"]" is the names {"timecode"}, child
// "source" and value "aux1" (without a condition, `child` is empty). The views point into `text`.
struct Selector {
  static constexpr std::size_t kMaxNames = 8;

  std::string_view text{};
  std::array<std::string_view, kMaxNames> names{};
  std::size_t name_count = 0;
  std::string_view child{};
  std::string_view value{};
};

namespace selector_parsing {

constexpr bool is_name_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-' || c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

// "a/b/c" into `selector.names`; false when the text is anything but up to kMaxNames names
// joined by "/".
constexpr bool split_names(std::string_view text, Selector& selector) {
  std::size_t start = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] != '/') {
      if (!is_name_character(text[i])) return false;
      continue;
    }
    if (i == start || selector.name_count == Selector::kMaxNames) return false;
    selector.names[selector.name_count++] = text.substr(start, i - start);
    start = i + 1;
  }
  return true;
}

}  // namespace selector_parsing

// The name chain `text` stands for, optionally ending in `[name="value"]` or `[name='value']`;
// nullopt for any other form.
constexpr std::optional<Selector> parse_selector(std::string_view text) {
  Selector selector{.text = text};
  std::string_view chain = text;
  if (text.ends_with(']')) {
    const std::size_t open = text.find('[');
    const std::size_t equals = text.find('=', open);
    if (open == std::string_view::npos || equals == std::string_view::npos) return std::nullopt;
    const std::string_view child = text.substr(open + 1, equals - open - 1);
    const std::string_view quoted = text.substr(equals + 1, text.size() - equals - 2);
    Selector child_chain;
    if (quoted.size() < 2 || (quoted.front() != '"' && quoted.front() != '\'') ||
        quoted.back() != quoted.front() ||
        quoted.substr(1, quoted.size() - 2).find(quoted.front()) != std::string_view::npos ||
        !selector_parsing::split_names(child, child_chain) || child_chain.name_count != 1) {
      return std::nullopt;
    }
    selector.child = child;
    selector.value = quoted.substr(1, quoted.size() - 2);
    chain = text.substr(0, open);
  }
  if (!selector_parsing::split_names(chain, selector)) return std::nullopt;
  return selector;
}

// A selector written in the code, split at compile time: `constexpr Selector kTimebase =
// name_chain("rate/timebase");`. Any other form does not compile.
consteval Selector name_chain(std::string_view text) {
  const std::optional<Selector> selector = parse_selector(text);
  if (!selector) throw std::invalid_argument("not a name chain");
  return *selector;
}

}  // namespace pellago
