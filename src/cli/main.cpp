#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "cli/commands.hpp"
#include "error.hpp"

namespace {

// Wrong usage in one line: what was wrong, and the help of the command that was being parsed.
std::string usage_message(const CLI::App* app, const CLI::Error& error) {
  std::string command = "pellago";
  for (const CLI::App* sub : app->get_subcommands()) command += " " + sub->get_name();
  return fmt::format("pellago: {}; see '{} --help'\n", error.what(), command);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace pellago::cli;

  CLI::App app{
      "pellago merges the log notes of an Excel log sheet (.xls or .xlsx) into a Final Cut Pro "
      "XML document.\n\nRun 'pellago COMMAND --help' to learn about one command."};
  app.name("pellago");
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
  } catch (const pellago::Error& e) {
    std::fputs(fmt::format("pellago: {}\n", e.what()).c_str(), stderr);
    return kExitError;
  } catch (const std::bad_alloc&) {
    std::fputs("pellago: out of memory; nothing was written\n", stderr);
    return kExitError;
  } catch (const std::exception& e) {
    std::fputs(fmt::format("pellago: {}; nothing was written\n", e.what()).c_str(), stderr);
    return kExitError;
  }
  return status;
}
