#include "cli/commands.hpp"

namespace pellago::cli {

void add_frames_command(CLI::App&, int&) {}

}  // namespace pellago::cli
