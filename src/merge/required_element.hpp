#pragma once

#include <string>
#include <string_view>

#include "document/document.hpp"

namespace pellago {

// "media/audio/in" -> "<media><audio><in>": how messages name the element a selector looks for.
std::string element_path(std::string_view selector);

// The first match of `selector` below `scope`. When there is none, throws Error
// "no <a><b> element" followed by `purpose` (" to hold \"Label 2\"").
Element required(Element scope, std::string_view selector, std::string_view purpose = {});
Element required(Element scope, const Selector& selector, std::string_view purpose = {});

// `found`, the result of looking up `selector`; when it is empty, throws as required does.
Element require_found(Element found, std::string_view selector, std::string_view purpose = {});

}  // namespace pellago
