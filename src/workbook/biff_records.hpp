#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace pellago {

// The BIFF8 records of a workbook stream: a 2-byte type, a 2-byte length, the data. Every read
// is checked against the bytes there are; a record that does not fit throws Error.
struct Record {
  std::uint16_t type = 0;
  // The record's data, then the data of each CONTINUE record right after it: one long record
  // that BIFF's 8,224-byte limit cut into pieces.
  std::vector<std::span<const std::uint8_t>> pieces;
};

class RecordStream {
 public:
  RecordStream(std::span<const std::uint8_t> stream, std::size_t offset);

  bool at_end() const { return offset_ >= stream_.size(); }
  // The next record with its CONTINUE records.
  Record next();

 private:
  std::span<const std::uint8_t> header_and_data(std::uint16_t& type);
  std::uint16_t peek_type() const;

  std::span<const std::uint8_t> stream_;
  std::size_t offset_;
};

// Reads the fields of one record, across its pieces.
class RecordReader {
 public:
  explicit RecordReader(const Record& record);

  std::uint8_t u8();
  std::uint16_t u16();
  std::uint32_t u32();
  double f64();
  void skip(std::size_t bytes);
  // The bytes left, over every piece.
  std::size_t remaining() const { return remaining_; }
  bool at_end() const { return remaining_ == 0; }

  // An XLUnicodeString: a character count of 2 bytes (1 when short_count), flags, characters.
  std::string unicode_string(bool short_count = false);
  // A shared string table entry: an XLUnicodeRichExtendedString, whose formatting runs and
  // phonetic data are skipped.
  std::string rich_string();

 private:
  void read(std::uint8_t* out, std::size_t bytes);
  // count characters, 1 byte each (Latin-1) or 2 (UTF-16LE) as flags says. Where the characters
  // run into the next piece, that piece starts with flags of its own.
  std::string characters(std::size_t count, std::uint8_t flags);

  const std::vector<std::span<const std::uint8_t>>& pieces_;
  std::size_t piece_ = 0;
  std::size_t offset_ = 0;
  std::size_t remaining_ = 0;
};

}  // namespace pellago
