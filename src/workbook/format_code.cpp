#include "workbook/format_code.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <vector>

namespace pellago {

namespace {

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool starts_with_any_case(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    if (lower(text[i]) != lower(prefix[i])) return false;
  }
  return true;
}

// One piece of a format code section.
enum class Piece {
  literal,      // text shown as it is
  placeholder,  // a digit: '0' shows a zero, '?' a space and '#' nothing where the number has none
  point,        // the decimal point
  comma,        // thousands separator, or a division by 1000 after the last digit
  percent,      // shows "%", the number times 100
  exponent,     // "E+" or "E-"
  general,      // the number as General shows it
  date_part,    // a run of one date or time letter ("yyyy", "mm"), "AM/PM", "A/P", "[h]"
};

struct Token {
  Piece piece;
  std::string text;  // the literal text, the placeholder character, the date letters
};

// "[h]", "[mm]", "[ss]": elapsed time.
bool is_elapsed(std::string_view inside) {
  if (inside.empty()) return false;
  const char first = lower(inside[0]);
  if (first != 'h' && first != 'm' && first != 's') return false;
  for (const char c : inside) {
    if (lower(c) != first) return false;
  }
  return true;
}

// "[$€-407]" shows "€"; colours, conditions and plain locales ("[$-409]") show nothing.
std::string bracket_text(std::string_view inside) {
  if (inside.empty() || inside[0] != '$') return {};
  return std::string(inside.substr(1, inside.find('-') - 1));
}

// A run of one date or time letter, any letter case, from `at`.
std::size_t letter_run(std::string_view section, std::size_t at) {
  std::size_t end = at + 1;
  while (end < section.size() && lower(section[end]) == lower(section[at])) ++end;
  return end - at;
}

std::vector<Token> tokenize(std::string_view section) {
  std::vector<Token> tokens;
  auto literal = [&tokens](std::string_view text) {
    if (!tokens.empty() && tokens.back().piece == Piece::literal) {
      tokens.back().text += text;
    } else {
      tokens.push_back({Piece::literal, std::string(text)});
    }
  };
  for (std::size_t i = 0; i < section.size(); ++i) {
    const char c = section[i];
    const std::string_view rest = section.substr(i);
    if (c == '"') {
      const std::size_t close = section.find('"', i + 1);
      const std::size_t end = close == std::string_view::npos ? section.size() : close;
      literal(section.substr(i + 1, end - i - 1));
      i = end;
    } else if (c == '\\' || c == '!') {
      if (i + 1 < section.size()) literal(section.substr(++i, 1));
    } else if (c == '_') {
      literal(" ");
      ++i;
    } else if (c == '*') {
      ++i;
    } else if (c == '[') {
      const std::size_t close = section.find(']', i + 1);
      const std::size_t end = close == std::string_view::npos ? section.size() : close;
      const std::string_view inside = section.substr(i + 1, end - i - 1);
      if (is_elapsed(inside)) {
        tokens.push_back({Piece::date_part, "[" + std::string(inside) + "]"});
      } else {
        literal(bracket_text(inside));
      }
      i = end;
    } else if (starts_with_any_case(rest, "General")) {
      tokens.push_back({Piece::general, {}});
      i += 6;
    } else if (starts_with_any_case(rest, "AM/PM") || starts_with_any_case(rest, "A/P")) {
      const std::size_t length = starts_with_any_case(rest, "AM/PM") ? 5 : 3;
      tokens.push_back({Piece::date_part, std::string(rest.substr(0, length))});
      i += length - 1;
    } else if (c == '0' || c == '#' || c == '?') {
      tokens.push_back({Piece::placeholder, std::string(1, c)});
    } else if (c == '.') {
      tokens.push_back({Piece::point, "."});
    } else if (c == ',') {
      tokens.push_back({Piece::comma, ","});
    } else if (c == '%') {
      tokens.push_back({Piece::percent, "%"});
    } else if ((c == 'E' || c == 'e') && rest.size() > 1 && (rest[1] == '+' || rest[1] == '-')) {
      tokens.push_back({Piece::exponent, std::string(rest.substr(0, 2))});
      ++i;
    } else if (const char l = lower(c); l == 'y' || l == 'm' || l == 'd' || l == 'h' || l == 's') {
      const std::size_t length = letter_run(section, i);
      tokens.push_back({Piece::date_part, std::string(rest.substr(0, length))});
      i += length - 1;
    } else if (c != '@') {
      literal(rest.substr(0, 1));
    }
  }
  return tokens;
}

// The code's sections, split at the semicolons outside quotes, brackets and escapes.
std::vector<std::string_view> sections_of(std::string_view code) {
  std::vector<std::string_view> sections;
  std::size_t start = 0;
  for (std::size_t i = 0; i < code.size(); ++i) {
    const char c = code[i];
    if (c == '"') {
      i = std::min(code.find('"', i + 1), code.size());
    } else if (c == '[') {
      i = std::min(code.find(']', i + 1), code.size());
    } else if (c == '\\' || c == '_' || c == '*') {
      ++i;
    } else if (c == ';') {
      sections.push_back(code.substr(start, i - start));
      start = i + 1;
    }
  }
  sections.push_back(code.substr(start));
  return sections;
}

bool has_piece(const std::vector<Token>& tokens, Piece piece) {
  for (const Token& token : tokens) {
    if (token.piece == piece) return true;
  }
  return false;
}

// ---- Numbers --------------------------------------------------------------------------------

// A fixed-point text without trailing zeros after the point, and without the point when nothing
// follows it.
std::string trim_fraction(std::string text) {
  if (text.find('.') == std::string::npos) return text;
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text;
}

// Up to 11 characters, as a spreadsheet's General shows a number in a column of usual width:
// "12", "0.333333333", "1.23457E+11".
std::string general_text(double value) {
  if (!std::isfinite(value)) return fmt::format("{}", value);
  if (value == 0) return "0";
  const double magnitude = std::fabs(value);
  if (magnitude < 1e11 && magnitude >= 1e-9) {
    const int integer_digits = magnitude >= 1 ? static_cast<int>(std::log10(magnitude)) + 1 : 1;
    std::string fixed =
        trim_fraction(fmt::format("{:.{}f}", value, std::max(0, 10 - integer_digits)));
    if (fixed != "0" && fixed != "-0") return fixed;
  }
  const std::string scientific = fmt::format("{:.5E}", value);
  const std::size_t e = scientific.find('E');
  return trim_fraction(scientific.substr(0, e)) + scientific.substr(e);
}

// Digit positions of a section.
struct Layout {
  std::vector<std::size_t> integer;   // token indices of the placeholders before the point
  std::vector<std::size_t> fraction;  // after it, before the exponent
  std::vector<std::size_t> exponent;  // after the exponent
  bool grouping = false;              // a comma between two integer placeholders
  int scale = 0;                      // commas after the last integer placeholder: / 1000 each
  int percents = 0;
  bool has_point = false;
  std::size_t exponent_at = 0;
  bool has_exponent = false;
};

Layout layout_of(const std::vector<Token>& tokens) {
  Layout layout;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    switch (tokens[i].piece) {
      case Piece::placeholder:
        (layout.has_exponent ? layout.exponent
         : layout.has_point  ? layout.fraction
                             : layout.integer)
            .push_back(i);
        break;
      case Piece::point:
        layout.has_point = !layout.has_exponent;
        break;
      case Piece::exponent:
        layout.has_exponent = true;
        layout.exponent_at = i;
        break;
      case Piece::percent:
        ++layout.percents;
        break;
      default:
        break;
    }
  }
  // A comma between integer placeholders groups thousands; a run of commas right after the last
  // placeholder before the exponent divides by 1000 each.
  const std::size_t last_digit = !layout.fraction.empty()  ? layout.fraction.back()
                                 : !layout.integer.empty() ? layout.integer.back()
                                                           : tokens.size();
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].piece != Piece::comma || layout.integer.empty()) continue;
    if (i > layout.integer.front() && i < layout.integer.back()) layout.grouping = true;
    if (i == last_digit + 1 + static_cast<std::size_t>(layout.scale)) ++layout.scale;
  }
  return layout;
}

// The number with `decimals` digits after the point, halves rounded away from zero as
// spreadsheets round them (2.5 -> "3", where printf gives "2").
std::string fixed_text(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  const double scaled = value * scale;
  const double rounded = std::fabs(scaled) < 1e15 ? std::round(scaled) / scale : value;
  return fmt::format("{:.{}f}", rounded, decimals);
}

std::string grouped(std::string digits) {
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3) digits.insert(at, ",");
  return digits;
}

// What each placeholder shows: the integer digits filled from the right (digits beyond the
// placeholders go to the first), the fraction digits from the left.
void fill_integer(const std::vector<Token>& tokens, const std::vector<std::size_t>& places,
                  std::string digits, bool grouping, std::vector<std::string>& shown) {
  if (places.empty()) return;
  if (grouping) {
    std::size_t zeros = 0;
    for (const std::size_t at : places) zeros += tokens[at].text == "0" ? 1 : 0;
    if (digits.size() < zeros) digits.insert(0, zeros - digits.size(), '0');
    shown[places.front()] = grouped(digits);
    return;
  }
  std::size_t left = digits.size();
  for (std::size_t k = places.size(); k-- > 0;) {
    const std::size_t at = places[k];
    if (left > 0) {
      shown[at] = k == 0 ? digits.substr(0, left) : digits.substr(--left, 1);
      if (k == 0) left = 0;
    } else {
      shown[at] = tokens[at].text == "0" ? "0" : tokens[at].text == "?" ? " " : "";
    }
  }
}

void fill_fraction(const std::vector<Token>& tokens, const std::vector<std::size_t>& places,
                   const std::string& digits, std::vector<std::string>& shown) {
  std::size_t significant = digits.find_last_not_of('0');
  significant = significant == std::string::npos ? 0 : significant + 1;
  for (std::size_t k = 0; k < places.size(); ++k) {
    const std::string& kind = tokens[places[k]].text;
    if (k < significant || kind == "0") {
      shown[places[k]] = digits.substr(k, 1);
    } else {
      shown[places[k]] = kind == "?" ? " " : "";
    }
  }
}

// "1 1/2" for 1.5 under "# ?/?": the whole part, then the closest fraction whose denominator
// has as many digits as the code's (or is the code's own number).
std::string fraction_text(double value, std::string_view section) {
  const std::size_t slash = section.find('/');
  const std::string_view after = section.substr(slash + 1);
  const std::size_t digits_end = after.find_first_not_of("0123456789?#");
  const std::string_view denominator_code = after.substr(0, digits_end);
  const bool whole_part = section.substr(0, slash).find_first_of(" ") != std::string_view::npos;
  int fixed = 0;
  int largest = 1;
  if (denominator_code.find_first_not_of("0123456789") == std::string_view::npos &&
      !denominator_code.empty()) {
    fixed = std::stoi(std::string(denominator_code.substr(0, 6)));
  } else {
    for (std::size_t i = 0; i < std::min<std::size_t>(denominator_code.size(), 4); ++i) {
      largest *= 10;
    }
    largest -= 1;
  }
  const double whole = whole_part ? std::floor(value) : 0.0;
  const double part = value - whole;
  long long best_numerator = 0;
  int best_denominator = 1;
  double best_error = part;
  for (int denominator = fixed ? fixed : 1; denominator <= (fixed ? fixed : largest);
       ++denominator) {
    const long long numerator = std::llround(part * denominator);
    const double error = std::fabs(part - static_cast<double>(numerator) / denominator);
    if (error < best_error - 1e-12) {
      best_error = error;
      best_numerator = numerator;
      best_denominator = denominator;
    }
  }
  std::string text;
  double shown_whole = whole;
  if (!fixed && best_numerator == best_denominator && whole_part) {
    shown_whole += 1;
    best_numerator = 0;
  }
  if (shown_whole != 0 || best_numerator == 0) text = fmt::format("{:.0f}", shown_whole);
  if (best_numerator != 0) {
    if (!text.empty()) text += ' ';
    text += fmt::format("{}/{}", best_numerator, best_denominator);
  }
  return text;
}

// Whether the section shows a fraction: a '/' right after a digit placeholder.
bool is_fraction(std::string_view section) {
  const std::size_t slash = section.find('/');
  return slash != std::string_view::npos && slash > 0 &&
         (section[slash - 1] == '?' || section[slash - 1] == '#' || section[slash - 1] == '0');
}

std::string exponent_digits(int exponent, const std::vector<Token>& tokens, const Layout& layout) {
  std::size_t width = 0;
  for (const std::size_t at : layout.exponent) width += tokens[at].text == "0" ? 1 : 0;
  const std::string digits = std::to_string(std::abs(exponent));
  const std::string sign = exponent < 0                                ? "-"
                           : tokens[layout.exponent_at].text[1] == '+' ? "+"
                                                                       : "";
  return tokens[layout.exponent_at].text.substr(0, 1) + sign +
         std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

// The non-negative value under one section.
std::string format_section(double value, std::string_view section) {
  if (is_fraction(section)) return fraction_text(value, section);
  const std::vector<Token> tokens = tokenize(section);
  const Layout layout = layout_of(tokens);
  value *= std::pow(100.0, layout.percents) / std::pow(1000.0, layout.scale);

  int exponent = 0;
  if (layout.has_exponent && value != 0) {
    const int step = std::max<int>(1, static_cast<int>(layout.integer.size()));
    exponent = static_cast<int>(std::floor(std::log10(value)));
    if (step > 1)
      exponent = static_cast<int>(std::floor(static_cast<double>(exponent) / step)) * step;
    value /= std::pow(10.0, exponent);
  }
  const std::string fixed = fixed_text(value, static_cast<int>(layout.fraction.size()));
  const std::size_t point = fixed.find('.');
  std::string integer_digits = fixed.substr(0, point);
  if (integer_digits == "0") integer_digits.clear();
  const std::string fraction_digits = point == std::string::npos ? "" : fixed.substr(point + 1);

  std::vector<std::string> shown(tokens.size());
  fill_integer(tokens, layout.integer, integer_digits, layout.grouping, shown);
  fill_fraction(tokens, layout.fraction, fraction_digits, shown);
  if (layout.has_exponent) shown[layout.exponent_at] = exponent_digits(exponent, tokens, layout);

  std::string text;
  const bool any_integer_placeholder = !layout.integer.empty();
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    switch (token.piece) {
      case Piece::placeholder:
        text += shown[i];
        break;
      case Piece::exponent:
        text += shown[i];
        break;
      case Piece::point:
        if (!any_integer_placeholder && text.empty() && !integer_digits.empty()) {
          text += integer_digits;
        }
        text += ".";
        break;
      case Piece::general:
        text += general_text(value);
        break;
      case Piece::literal:
      case Piece::percent:
      case Piece::date_part:
        text += token.text;
        break;
      case Piece::comma:
        break;
    }
  }
  return text;
}

bool is_negative_section_chosen(std::size_t sections, double value) {
  return sections >= 2 && value < 0;
}

// ---- Dates and times -------------------------------------------------------------------------

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};

// Days since 1970-01-01 of a proleptic Gregorian date.
std::int64_t days_from_civil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2 ? 1 : 0;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const auto year_of_era = static_cast<unsigned>(year - era * 400);
  const unsigned day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const unsigned day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * 146097 + static_cast<std::int64_t>(day_of_era) - 719468;
}

std::string_view weekday_name(const DateTime& value) {
  const std::int64_t days = days_from_civil(value.year, static_cast<unsigned>(value.month),
                                            static_cast<unsigned>(value.day));
  return kWeekdays[static_cast<std::size_t>(((days % 7) + 11) % 7)];  // 1970-01-01: Thursday
}

std::string padded(int number, std::size_t width) { return fmt::format("{:0{}}", number, width); }

std::string month_text(const DateTime& value, std::size_t letters) {
  const std::string_view name =
      kMonths[static_cast<std::size_t>(std::clamp(value.month, 1, 12) - 1)];
  if (letters >= 5) return std::string(name.substr(0, 1));
  if (letters == 4) return std::string(name);
  if (letters == 3) return std::string(name.substr(0, 3));
  return padded(value.month, letters);
}

std::string day_text(const DateTime& value, std::size_t letters) {
  if (letters >= 4) return std::string(weekday_name(value));
  if (letters == 3) return std::string(weekday_name(value).substr(0, 3));
  return padded(value.day, letters);
}

std::string year_text(const DateTime& value, std::size_t letters) {
  return letters <= 2 ? padded(value.year % 100, 2) : padded(value.year, 4);
}

std::string hour_text(const DateTime& value, std::size_t letters, bool twelve_hour) {
  int hour = value.hour;
  if (twelve_hour) hour = hour % 12 == 0 ? 12 : hour % 12;
  return padded(hour, letters);
}

// "AM/PM", "am/pm", "A/P" or "a/p".
bool is_am_pm(std::string_view date_part) { return date_part.find('/') != std::string_view::npos; }

std::string am_pm_text(const DateTime& value, std::string_view written) {
  const bool pm = value.hour >= 12;
  if (written.size() == 3) {  // A/P
    const char letter = pm ? written[2] : written[0];
    return std::string(1, letter);
  }
  const bool lower_case = written[0] == 'a' || written[0] == 'p';
  return pm ? (lower_case ? "pm" : "PM") : (lower_case ? "am" : "AM");
}

// The elapsed hours, minutes or seconds of a time of day.
std::string elapsed_text(const DateTime& value, std::string_view bracketed) {
  const std::size_t letters = bracketed.size() - 2;
  const int seconds = value.hour * 3600 + value.minute * 60 + value.second;
  switch (lower(bracketed[1])) {
    case 'h':
      return padded(seconds / 3600, letters);
    case 'm':
      return padded(seconds / 60, letters);
    default:
      return padded(seconds, letters);
  }
}

char date_letter(const Token& token) {
  return token.piece == Piece::date_part && token.text[0] != '[' ? lower(token.text[0]) : '\0';
}

// Whether the 'm' run at `at` counts minutes: after an hour, or before a second.
bool counts_minutes(const std::vector<Token>& tokens, std::size_t at) {
  for (std::size_t i = at; i-- > 0;) {
    if (tokens[i].piece != Piece::date_part) continue;
    const char letter = date_letter(tokens[i]);
    if (letter == 'h' || (letter == '\0' && lower(tokens[i].text[1]) == 'h')) return true;
    break;
  }
  for (std::size_t i = at + 1; i < tokens.size(); ++i) {
    if (tokens[i].piece != Piece::date_part) continue;
    const char letter = date_letter(tokens[i]);
    return letter == 's' || (letter == '\0' && lower(tokens[i].text[1]) == 's');
  }
  return false;
}

std::string date_part_text(const std::vector<Token>& tokens, std::size_t at, const DateTime& value,
                           bool twelve_hour) {
  const std::string& text = tokens[at].text;
  if (text[0] == '[') return elapsed_text(value, text);
  if (is_am_pm(text)) return am_pm_text(value, text);
  switch (lower(text[0])) {
    case 'y':
      return year_text(value, text.size());
    case 'd':
      return day_text(value, text.size());
    case 'h':
      return hour_text(value, text.size(), twelve_hour);
    case 's':
      return padded(value.second, std::min<std::size_t>(text.size(), 2));
    default:
      return counts_minutes(tokens, at)
                 ? padded(value.minute, std::min<std::size_t>(text.size(), 2))
                 : month_text(value, text.size());
  }
}

std::string_view default_date_code(DateKind kind) {
  switch (kind) {
    case DateKind::date:
      return "m/d/yyyy";
    case DateKind::time:
      return "h:mm:ss";
    case DateKind::date_time:
    case DateKind::none:
      break;
  }
  return "m/d/yyyy h:mm:ss";
}

// The system's long date and time formats, named by locale tags.
std::string_view system_format_code(std::string_view code) {
  if (code.find("[$-F800]") != std::string_view::npos) return "dddd, mmmm d, yyyy";
  if (code.find("[$-F400]") != std::string_view::npos) return "h:mm:ss AM/PM";
  return code;
}

}  // namespace

std::string_view builtin_format_code(int format_id) {
  switch (format_id) {
    case 1:
      return "0";
    case 2:
      return "0.00";
    case 3:
      return "#,##0";
    case 4:
      return "#,##0.00";
    case 5:
      return "$#,##0_);($#,##0)";
    case 6:
      return "$#,##0_);[Red]($#,##0)";
    case 7:
      return "$#,##0.00_);($#,##0.00)";
    case 8:
      return "$#,##0.00_);[Red]($#,##0.00)";
    case 9:
      return "0%";
    case 10:
      return "0.00%";
    case 11:
      return "0.00E+00";
    case 12:
      return "# ?/?";
    case 13:
      return "# ?\?/??";
    case 14:
      return "m/d/yyyy";
    case 15:
      return "d-mmm-yy";
    case 16:
      return "d-mmm";
    case 17:
      return "mmm-yy";
    case 18:
      return "h:mm AM/PM";
    case 19:
      return "h:mm:ss AM/PM";
    case 20:
      return "h:mm";
    case 21:
      return "h:mm:ss";
    case 22:
      return "m/d/yyyy h:mm";
    case 37:
      return "#,##0 ;(#,##0)";
    case 38:
      return "#,##0 ;[Red](#,##0)";
    case 39:
      return "#,##0.00;(#,##0.00)";
    case 40:
      return "#,##0.00;[Red](#,##0.00)";
    case 45:
      return "mm:ss";
    case 46:
      return "[h]:mm:ss";
    case 47:
      return "mmss.0";
    case 48:
      return "##0.0E+0";
    case 49:
      return "@";
    default:
      return {};
  }
}

std::string format_number(double value, std::string_view code) {
  if (!std::isfinite(value)) return general_text(value);
  const std::vector<std::string_view> sections = sections_of(code);
  std::string_view section = sections[0];
  if (is_negative_section_chosen(sections.size(), value)) {
    section = sections[1];
  } else if (sections.size() >= 3 && value == 0) {
    section = sections[2];
  }
  const std::vector<Token> tokens = tokenize(section);
  const bool has_digits =
      has_piece(tokens, Piece::placeholder) || has_piece(tokens, Piece::general);
  if (!has_digits && (has_piece(tokens, Piece::date_part) || section.empty())) {
    return general_text(value);
  }
  const bool sign_shown = value < 0 && !is_negative_section_chosen(sections.size(), value);
  std::string text = format_section(std::fabs(value), section);
  if (sign_shown && text.find_first_of("123456789") != std::string::npos) text.insert(0, "-");
  return text;
}

std::string format_date_time(const DateTime& value, std::string_view code) {
  code = system_format_code(code);
  std::vector<Token> tokens = tokenize(sections_of(code)[0]);
  if (!has_piece(tokens, Piece::date_part)) tokens = tokenize(default_date_code(value.kind));
  bool twelve_hour = false;
  for (const Token& token : tokens) {
    if (token.piece == Piece::date_part && is_am_pm(token.text)) twelve_hour = true;
  }
  std::string text;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    switch (token.piece) {
      case Piece::date_part:
        text += date_part_text(tokens, i, value, twelve_hour);
        break;
      case Piece::general:
        break;
      default:
        text += token.text;
        break;
    }
  }
  return text;
}

}  // namespace pellago
