#include "workbook/xlsx_strings.hpp"

#include <charconv>
#include <optional>

#include "workbook/part_parser.hpp"

namespace pellago {

namespace {

void append_utf8(std::string& out, std::uint32_t code_point) {
  if (code_point < 0x80) {
    out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    out += static_cast<char>(0xC0 | (code_point >> 6));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    out += static_cast<char>(0xE0 | (code_point >> 12));
    out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code_point >> 18));
    out += static_cast<char>(0x80 | ((code_point >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  }
}

// The UTF-16 code unit of an escape "_xHHHH_" at text[i], if one stands there.
std::optional<std::uint32_t> escaped_unit(std::string_view text, std::size_t i) {
  if (i + 7 > text.size() || text.compare(i, 2, "_x") != 0 || text[i + 6] != '_') {
    return std::nullopt;
  }
  std::uint32_t unit = 0;
  const auto [end, error] = std::from_chars(text.data() + i + 2, text.data() + i + 6, unit, 16);
  if (error != std::errc() || end != text.data() + i + 6) return std::nullopt;
  return unit;
}

class SharedStringsHandler final : public PartHandler {
 public:
  void start(std::string_view name, const Attributes&) override {
    if (name == "si") {
      in_item_ = true;
      item_.clear();
    } else if (in_item_) {
      item_.start(name);
    }
  }
  void end(std::string_view name) override {
    if (name == "si") {
      in_item_ = false;
      strings.push_back(item_.finish());
    } else if (in_item_) {
      item_.end(name);
    }
  }
  void text(std::string_view piece) override {
    if (in_item_) item_.text(piece);
  }

  std::vector<std::string> strings;

 private:
  StringItemText item_;
  bool in_item_ = false;
};

}  // namespace

void unescape_characters(std::string& text) {
  if (text.find("_x") == std::string::npos) return;
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto unit = escaped_unit(text, i);
    if (!unit) {
      out += text[i++];
      continue;
    }
    i += 7;
    std::uint32_t code_point = *unit;
    if (code_point >= 0xD800 && code_point <= 0xDBFF) {
      const auto low = escaped_unit(text, i);
      if (low && *low >= 0xDC00 && *low <= 0xDFFF) {
        code_point = 0x10000 + ((code_point - 0xD800) << 10) + (*low - 0xDC00);
        i += 7;
      } else {
        code_point = 0xFFFD;
      }
    } else if (code_point >= 0xDC00 && code_point <= 0xDFFF) {
      code_point = 0xFFFD;
    }
    append_utf8(out, code_point);
  }
  text = std::move(out);
}

std::vector<std::string> read_shared_strings(const ZipPackage& package,
                                             const std::string& part_name, std::uint64_t cap) {
  SharedStringsHandler handler;
  parse_part(package, part_name, cap, handler);
  return std::move(handler.strings);
}

}  // namespace pellago
