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
  Element found = scope.first(selector);
  if (!found) throw Error(fmt::format("no {} element{}", element_path(selector), purpose));
  return found;
}

}  // namespace pellago
