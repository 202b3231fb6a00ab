#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>
#include <string_view>

namespace pellago::cli {

// Exit statuses that scripts depend on.
inline constexpr int kExitOk = 0;
inline constexpr int kExitError = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNotALogSheet = 3;

// The help of --classic, which merge and check share.
inline constexpr const char* kClassicFlag =
    "Follow the classic rules, as the Ruby module does: only master clips are logged, file "
    "references are not followed, ntsc is TRUE or FALSE exactly, a clip cut into subclips becomes "
    "the first of them, and clips further down the document than the sheet has rows are only "
    "partly logged";

// "1 clip", "2 clips": a count and its noun, plural unless the count is 1.
inline std::string counted(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

// Each adds one subcommand to the program; its callback stores the exit status in `status`.
// Callbacks throw pellago::Error on failure; main turns that into one line and status 1.
void add_export_command(CLI::App& app, int& status);
void add_check_command(CLI::App& app, int& status);
void add_frames_command(CLI::App& app, int& status);
void add_inspect_command(CLI::App& app, int& status);
void add_merge_command(CLI::App& app, int& status);

}  // namespace pellago::cli
