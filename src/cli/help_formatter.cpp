#include "cli/help_formatter.hpp"

#include <sstream>
#include <string_view>

namespace pellago::cli {

namespace {

// Where a wrapped line's text starts, and its continuations with it: after the line's indentation,
// or, in a table row (a first cell, then a gap of two blanks or more), after the gap.
std::size_t continuation_indent(std::string_view line) {
  const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
  const std::size_t gap = line.find("  ", indent);
  if (gap == std::string_view::npos) return indent;
  return std::min(line.find_first_not_of(' ', gap), line.size());
}

void append_wrapped_line(std::string_view line, std::size_t width, std::string& out) {
  const std::size_t indent = continuation_indent(line);
  const std::string prefix(indent, ' ');
  std::size_t column = indent;
  out += line.substr(0, indent);
  std::string_view rest = line.substr(indent);
  bool first_word = true;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    const std::string_view word = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (word.empty()) continue;
    if (!first_word && column + 1 + word.size() > width) {
      out += '\n';
      out += prefix;
      column = indent;
      first_word = true;
    }
    if (!first_word) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
    first_word = false;
  }
}

// Each line of `text` longer than `width` broken at blanks; a word longer than the width stays
// whole.
std::string wrap_lines(const std::string& text, std::size_t width) {
  std::string out;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    if (line.size() <= width) {
      out += line;
    } else {
      append_wrapped_line(line, width, out);
    }
    if (end == std::string_view::npos) break;
    out += '\n';
    rest.remove_prefix(end + 1);
  }
  return out;
}

}  // namespace

std::string HelpFormatter::make_description(const CLI::App* app) const {
  return wrap_lines(Formatter::make_description(app), kWidth);
}

std::string HelpFormatter::make_footer(const CLI::App* app) const {
  return wrap_lines(Formatter::make_footer(app), kWidth);
}

std::string HelpFormatter::make_subcommand(const CLI::App* sub) const {
  std::stringstream out;
  CLI::detail::format_help(out, sub->get_display_name(true),
                           wrap_lines(sub->get_description(), kWidth - get_column_width()),
                           get_column_width());
  return out.str();
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
  return wrap_lines(Formatter::make_option_desc(option), kWidth - get_column_width());
}

}  // namespace pellago::cli
