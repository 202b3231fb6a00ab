#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "check/near_names.hpp"
#include "cli/commands.hpp"
#include "cli/help_formatter.hpp"
#include "error.hpp"
#include "merge/messages.hpp"
#include "version.hpp"

namespace {

// "pellago: "mrege" is not a command; the commands are merge, inspect, check, frames and export
// (did you mean merge?)": the commands in the order the help lists them, and the nearest when it is
// near.
std::string unknown_command_message(const CLI::App* app, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::App* sub : app->get_subcommands({})) names.push_back(sub->get_name());
  if (names.empty()) return {};
  std::string list = names.front();
  for (std::size_t i = 1; i < names.size(); ++i) {
    list += fmt::format("{}{}", i + 1 == names.size() ? " and " : ", ", names[i]);
  }
  const auto nearest = std::ranges::min_element(
      names, {}, [&](const std::string& name) { return pellago::edit_distance(word, name); });
  const std::string suggestion = pellago::edit_distance(word, *nearest) <= 2
                                     ? fmt::format(" (did you mean {}?)", *nearest)
                                     : "";
  return fmt::format(
      "pellago: \"{}\" is not a command; the commands are {}{}; see 'pellago --help'\n", word, list,
      suggestion);
}

// Wrong usage in one line: what was wrong, and the help of the command that was being parsed.
std::string usage_message(const CLI::App* app, const CLI::Error& error) {
  // A first word that named no command is left over, unparsed, on the program itself.
  const std::vector<std::string> left = app->remaining();
  if (app->get_subcommands().empty() && !left.empty() && !left.front().starts_with('-')) {
    return unknown_command_message(app, left.front());
  }
  std::string command = "pellago";
  for (const CLI::App* sub : app->get_subcommands()) command += " " + sub->get_name();
  return fmt::format("pellago: {}; see '{} --help'\n", error.what(), command);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace pellago::cli;
  // A file size limit, or a closed pipe, makes a write fail, and the command with it, with one of
  // its statuses: the signals would end the process without one.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);

  CLI::App app{
      "pellago merges the log notes of an Excel log sheet (.xls or .xlsx) into a Final Cut Pro "
      "XML document.\n\nRun 'pellago COMMAND --help' to learn about one command."};
  app.name("pellago");
  // Set before the commands are added: each takes its parent's formatter.
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_version_flag("--version", fmt::format("pellago {}", pellago::kVersion));
  app.require_subcommand(1);
  app.failure_message(usage_message);
  app.footer(
      "Exit status: 0 done, 1 error (nothing written), 2 wrong usage, 3 not a log sheet (merge).");

  int status = kExitOk;
  add_merge_command(app, status);
  add_inspect_command(app, status);
  add_check_command(app, status);
  add_frames_command(app, status);
  add_export_command(app, status);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? kExitOk : kExitUsage;
  } catch (const std::exception& e) {
    std::fputs(fmt::format("pellago: {}\n", pellago::failure_message(e)).c_str(), stderr);
    return kExitError;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fputs(
        fmt::format("pellago: cannot write standard output: {}\n", std::strerror(errno)).c_str(),
        stderr);
    return kExitError;
  }
  return status;
}
