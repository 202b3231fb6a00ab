#pragma once

#include <optional>
#include <string>

namespace pellago {

// The user's Library folder, tilde expanded: ~/Library on macOS; on other systems
// $HOME/Library when that folder exists, and none otherwise. The home folder is $HOME, or the
// user database's entry when HOME is unset or empty.
std::optional<std::string> user_library_directory();

}  // namespace pellago
