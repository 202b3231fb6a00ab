#include "workbook/file_signature.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "error.hpp"

namespace pellago {

namespace {

constexpr std::array<unsigned char, 8> kCompoundDocument = {0xD0, 0xCF, 0x11, 0xE0,
                                                            0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::array<unsigned char, 4> kZipLocalHeader = {'P', 'K', 3, 4};
constexpr std::array<unsigned char, 4> kZipEmptyArchive = {'P', 'K', 5, 6};

[[noreturn]] void throw_unreadable(const std::string& path, int error) {
  throw Error(fmt::format("cannot read \"{}\": {}", path, std::strerror(error)), error);
}

template <std::size_t N>
bool starts_with(const std::array<unsigned char, 8>& bytes, ssize_t count,
                 const std::array<unsigned char, N>& magic) {
  return count >= static_cast<ssize_t>(N) && std::equal(magic.begin(), magic.end(), bytes.begin());
}

}  // namespace

FileSignature read_file_signature(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) throw_unreadable(path, errno);
  std::array<unsigned char, 8> bytes{};
  const ssize_t count = ::read(fd, bytes.data(), bytes.size());
  const int read_error = errno;
  ::close(fd);
  if (count < 0) throw_unreadable(path, read_error);
  if (starts_with(bytes, count, kCompoundDocument)) return FileSignature::compound_document;
  if (starts_with(bytes, count, kZipLocalHeader) || starts_with(bytes, count, kZipEmptyArchive)) {
    return FileSignature::zip;
  }
  return FileSignature::other;
}

}  // namespace pellago
