#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace pellago::cli {

// Help text at most 80 columns wide: descriptions, footers and the texts beside option and command
// names wrap at word boundaries. A wrapped line's continuation keeps the line's indentation, so
// indented tables stay tables; lines that fit are left as written.
class HelpFormatter : public CLI::Formatter {
 public:
  static constexpr std::size_t kWidth = 80;

  std::string make_description(const CLI::App* app) const override;
  std::string make_footer(const CLI::App* app) const override;
  std::string make_subcommand(const CLI::App* sub) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace pellago::cli
