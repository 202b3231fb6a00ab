#include "module/library_directory.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace pellago {

namespace {

std::optional<std::string> home_directory() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
      found->pw_dir == nullptr || *found->pw_dir == '\0') {
    return std::nullopt;
  }
  return std::string(found->pw_dir);
}

}  // namespace

std::optional<std::string> user_library_directory() {
  const std::optional<std::string> home = home_directory();
  if (!home) return std::nullopt;
  std::string library = *home + "/Library";
#ifndef __APPLE__
  std::error_code ignored;
  if (!std::filesystem::is_directory(library, ignored)) return std::nullopt;
#endif
  return library;
}

}  // namespace pellago
