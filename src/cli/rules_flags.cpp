#include "cli/commands.hpp"

namespace pellago::cli {

Rules RulesFlags::rules() const {
  Rules chosen = rules_for(classic);
  if (recover) chosen.refuse_malformed_xml = false;
  if (strict) chosen.refuse_malformed_xml = true;
  return chosen;
}

void add_rules_flags(CLI::App& command, RulesFlags& flags) {
  command.add_flag(
      "--classic", flags.classic,
      "Follow the classic rules, as the Ruby module does: only master clips are logged, file "
      "references are not followed, ntsc is TRUE or FALSE exactly, a clip cut into subclips "
      "becomes the first of them, markers are added again on a second merge, a damaged XML "
      "document is merged as far as it can be read, and clips further down the document than the "
      "sheet has rows are only partly logged");
  command.add_flag("--recover", flags.recover,
                   "Merge what can be read of an XML document that is not well-formed (the clips "
                   "after its first error may be missing) instead of refusing it");
  command
      .add_flag("--strict", flags.strict,
                "Refuse an XML document that is not well-formed, under --classic too")
      ->excludes("--recover");
  add_worksheet_option(command, flags.worksheet);
}

void add_worksheet_option(CLI::App& command, std::optional<std::string>& worksheet) {
  command
      .add_option("--sheet", worksheet,
                  "Read the worksheet of this name (as its tab shows it) instead of the first "
                  "one with a Name header")
      ->option_text("NAME");
}

}  // namespace pellago::cli
