#include "cli/commands.hpp"

namespace pellago::cli {

void add_inspect_command(CLI::App&, int&) {}

}  // namespace pellago::cli
