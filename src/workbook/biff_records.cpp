#include "workbook/biff_records.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "error.hpp"

namespace pellago {

namespace {

constexpr std::uint16_t kContinue = 0x003C;

std::uint16_t little_u16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

void append_utf8(std::string& out, char32_t code_point) {
  if (code_point < 0x80) {
    out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    out += static_cast<char>(0xC0 | code_point >> 6);
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    out += static_cast<char>(0xE0 | code_point >> 12);
    out += static_cast<char>(0x80 | (code_point >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | code_point >> 18);
    out += static_cast<char>(0x80 | (code_point >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (code_point >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  }
}

// UTF-16 code units as UTF-8; a surrogate without its partner becomes U+FFFD.
std::string utf8_of(const std::u16string& units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
        units[i + 1] < 0xE000) {
      append_utf8(text, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00));
    } else if (unit >= 0xD800 && unit < 0xE000) {
      append_utf8(text, 0xFFFD);
    } else {
      append_utf8(text, unit);
    }
  }
  return text;
}

[[noreturn]] void ends_early() {
  throw Error("the workbook records are damaged: a record ends before its data does");
}

}  // namespace

RecordStream::RecordStream(std::span<const std::uint8_t> stream, std::size_t offset)
    : stream_(stream), offset_(offset) {
  if (offset > stream.size()) {
    throw Error("the workbook records are damaged: a sheet starts past the end of the stream");
  }
}

std::uint16_t RecordStream::peek_type() const {
  return stream_.size() - offset_ >= 2 ? little_u16(stream_.data() + offset_) : 0;
}

std::span<const std::uint8_t> RecordStream::header_and_data(std::uint16_t& type) {
  if (stream_.size() - offset_ < 4) {
    throw Error("the workbook records are damaged: the stream ends inside a record header");
  }
  type = little_u16(stream_.data() + offset_);
  const std::size_t length = little_u16(stream_.data() + offset_ + 2);
  offset_ += 4;
  if (stream_.size() - offset_ < length) {
    throw Error(fmt::format(
        "the workbook records are damaged: a record of type 0x{:04X} claims {} bytes, but the "
        "stream holds {} more",
        type, length, stream_.size() - offset_));
  }
  const auto data = stream_.subspan(offset_, length);
  offset_ += length;
  return data;
}

Record RecordStream::next() {
  Record record;
  record.pieces.push_back(header_and_data(record.type));
  while (!at_end() && peek_type() == kContinue) {
    std::uint16_t type = 0;
    record.pieces.push_back(header_and_data(type));
  }
  return record;
}

RecordReader::RecordReader(const Record& record) : pieces_(record.pieces) {
  for (const auto piece : pieces_) remaining_ += piece.size();
}

void RecordReader::read(std::uint8_t* out, std::size_t bytes) {
  while (bytes > 0) {
    if (piece_ >= pieces_.size()) ends_early();
    const auto piece = pieces_[piece_];
    if (offset_ == piece.size()) {
      if (piece_ + 1 >= pieces_.size()) ends_early();
      ++piece_;
      offset_ = 0;
      continue;
    }
    const std::size_t taken = std::min(bytes, piece.size() - offset_);
    if (out != nullptr) {
      std::memcpy(out, piece.data() + offset_, taken);
      out += taken;
    }
    offset_ += taken;
    remaining_ -= taken;
    bytes -= taken;
  }
}

std::uint8_t RecordReader::u8() {
  std::uint8_t value = 0;
  read(&value, 1);
  return value;
}

std::uint16_t RecordReader::u16() {
  std::uint8_t bytes[2];
  read(bytes, 2);
  return little_u16(bytes);
}

std::uint32_t RecordReader::u32() {
  std::uint8_t bytes[4];
  read(bytes, 4);
  return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16) |
         static_cast<std::uint32_t>(bytes[3]) << 24;
}

double RecordReader::f64() {
  std::uint8_t bytes[8];
  read(bytes, 8);
  std::uint64_t bits = 0;
  for (int i = 7; i >= 0; --i) bits = bits << 8 | bytes[i];
  return std::bit_cast<double>(bits);
}

void RecordReader::skip(std::size_t bytes) {
  if (bytes > remaining()) ends_early();
  read(nullptr, bytes);
}

std::string RecordReader::characters(std::size_t count, std::uint8_t flags) {
  std::u16string units;
  while (count > 0) {
    if (piece_ >= pieces_.size()) ends_early();
    if (offset_ == pieces_[piece_].size()) {
      // The characters go on in the next piece, which says again whether they are 1 or 2 bytes.
      if (piece_ + 1 >= pieces_.size()) ends_early();
      ++piece_;
      offset_ = 0;
      flags = u8();
      continue;
    }
    const bool wide = (flags & 0x01) != 0;
    const auto piece = pieces_[piece_];
    const std::size_t here = std::min(count, (piece.size() - offset_) / (wide ? 2 : 1));
    if (here == 0) ends_early();  // half a UTF-16 unit at the end of a piece
    for (std::size_t i = 0; i < here; ++i) {
      const std::uint8_t* at = piece.data() + offset_ + i * (wide ? 2 : 1);
      units += static_cast<char16_t>(wide ? little_u16(at) : *at);
    }
    offset_ += here * (wide ? 2 : 1);
    remaining_ -= here * (wide ? 2 : 1);
    count -= here;
  }
  return utf8_of(units);
}

std::string RecordReader::unicode_string(bool short_count) {
  const std::size_t count = short_count ? u8() : u16();
  const std::uint8_t flags = u8();
  return characters(count, flags);
}

std::string RecordReader::rich_string() {
  const std::size_t count = u16();
  const std::uint8_t flags = u8();
  const std::size_t runs = (flags & 0x08) != 0 ? u16() : 0;
  const std::size_t phonetic_bytes = (flags & 0x04) != 0 ? u32() : 0;
  std::string text = characters(count, flags);
  skip(runs * 4);
  skip(phonetic_bytes);
  return text;
}

}  // namespace pellago
