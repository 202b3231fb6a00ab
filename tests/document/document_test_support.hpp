#pragma once

#include <string>
#include <string_view>

#include "document/document.hpp"

namespace pellago::test {

inline constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// A document parsed from `body` behind a UTF-8 XML declaration.
inline Document parse_body(std::string_view body) {
  return Document::parse_string(std::string(kDeclaration) + std::string(body));
}

// What the document writes, without the XML declaration.
inline std::string written_body(const Document& document) {
  return document.write().substr(kDeclaration.size());
}

}  // namespace pellago::test
