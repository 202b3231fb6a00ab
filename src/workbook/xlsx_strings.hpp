#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/zip_package.hpp"

namespace pellago {

// Spreadsheet text writes characters XML cannot hold (control characters, a literal "_x") as
// "_xHHHH_" escapes of UTF-16 code units; this puts the characters back.
void unescape_characters(std::string& text);

// Collects the text of a string item (<si> or <is>) from the events inside it: its <t>, or the
// <t> of each rich-text run, leaving out the phonetic runs <rPh>.
class StringItemText {
 public:
  void clear() {
    text_.clear();
    in_text_ = false;
    in_phonetic_ = false;
  }
  void start(std::string_view name) {
    if (name == "t") in_text_ = true;
    if (name == "rPh") in_phonetic_ = true;
  }
  void end(std::string_view name) {
    if (name == "t") in_text_ = false;
    if (name == "rPh") in_phonetic_ = false;
  }
  void text(std::string_view piece) {
    if (in_text_ && !in_phonetic_) text_ += piece;
  }
  // The item's text, its escapes undone; the buffer is reused by the next item.
  std::string& finish() {
    unescape_characters(text_);
    return text_;
  }

 private:
  std::string text_;
  bool in_text_ = false;
  bool in_phonetic_ = false;
};

// The shared string table: every <si> item's text, in order. The part may unpack to cap bytes.
std::vector<std::string> read_shared_strings(const ZipPackage& package,
                                             const std::string& part_name, std::uint64_t cap);

}  // namespace pellago
