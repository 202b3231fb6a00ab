#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace pellago::cli {

// Exit statuses that scripts depend on.
inline constexpr int kExitOk = 0;
inline constexpr int kExitError = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNotALogSheet = 3;

// The help of --classic, which merge and check share.
inline constexpr const char* kClassicFlag =
    "Follow the classic rules, as the Ruby module does: only master clips are logged, file "
    "references are not followed, ntsc is TRUE or FALSE exactly, and clips further down the "
    "document than the sheet has rows are only partly logged";

// Each adds one subcommand to the program; its callback stores the exit status in `status`.
// Callbacks throw pellago::Error on failure; main turns that into one line and status 1.
void add_export_command(CLI::App& app, int& status);
void add_check_command(CLI::App& app, int& status);
void add_frames_command(CLI::App& app, int& status);
void add_inspect_command(CLI::App& app, int& status);
void add_merge_command(CLI::App& app, int& status);

}  // namespace pellago::cli
