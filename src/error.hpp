#pragma once

#include <stdexcept>
#include <string>

namespace pellago {

// The one exception type of the engine. The message is complete and meant for the user: it says
// what was being done, to what, and what was missing. system_error is the errno of a failed
// system call (a file that cannot be opened, read or written), 0 for every other failure, so that
// a front end can report it as the matching system error.
struct Error : std::runtime_error {
  explicit Error(const std::string& message, int system_error = 0)
      : std::runtime_error(message), system_error(system_error) {}

  int system_error;
};

}  // namespace pellago
