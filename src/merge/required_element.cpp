#include "merge/required_element.hpp"

#include <fmt/format.h>

#include "error.hpp"

namespace pellago {

std::string element_path(std::string_view selector) {
  std::string path = "<";
  for (char c : selector) {
    if (c == '/') {
      path += "><";
    } else {
      path += c;
    }
  }
  return path + ">";
}

Element required(Element scope, std::string_view selector, std::string_view purpose) {
  return require_found(scope.first(selector), selector, purpose);
}

Element required(Element scope, const Selector& selector, std::string_view purpose) {
  return require_found(scope.first(selector), selector.text, purpose);
}

Element require_found(Element found, std::string_view selector, std::string_view purpose) {
  if (!found) throw Error(fmt::format("no {} element{}", element_path(selector), purpose));
  return found;
}

}  // namespace pellago
