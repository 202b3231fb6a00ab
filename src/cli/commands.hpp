#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "merge/rules.hpp"

namespace pellago::cli {

// Exit statuses that scripts depend on.
inline constexpr int kExitOk = 0;
inline constexpr int kExitError = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNotALogSheet = 3;

// The flags that choose the merge's rules, and the worksheet it reads, which merge and check
// share.
struct RulesFlags {
  bool classic = false;
  bool recover = false;
  bool strict = false;
  std::optional<std::string> worksheet;

  Rules rules() const;
};

void add_rules_flags(CLI::App& command, RulesFlags& flags);

// --sheet NAME, for every command that reads a log sheet.
void add_worksheet_option(CLI::App& command, std::optional<std::string>& worksheet);

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
