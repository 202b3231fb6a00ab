#include "cli/commands.hpp"

namespace pellago::cli {

void add_merge_command(CLI::App&, int&) {}

}  // namespace pellago::cli
