#include "workbook/zip_package.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "error.hpp"

namespace pellago {

namespace {

std::string zip_error_text(int code) {
  zip_error_t error;
  zip_error_init_with_code(&error, code);
  std::string text = zip_error_strerror(&error);
  zip_error_fini(&error);
  return text;
}

}  // namespace

ZipPackage::ZipPackage(const std::string& path) : path_(path) {
  int code = 0;
  archive_ = zip_open(path.c_str(), ZIP_RDONLY, &code);
  if (archive_ == nullptr) {
    throw Error(fmt::format("{}: damaged .xlsx package: {}", path, zip_error_text(code)));
  }
}

ZipPackage::~ZipPackage() { zip_discard(archive_); }

std::optional<zip_uint64_t> ZipPackage::find(const std::string& part_name) const {
  zip_int64_t index = zip_name_locate(archive_, part_name.c_str(), 0);
  if (index < 0) index = zip_name_locate(archive_, part_name.c_str(), ZIP_FL_NOCASE);
  if (index < 0) return std::nullopt;
  return static_cast<zip_uint64_t>(index);
}

ZipMemberStream::ZipMemberStream(const ZipPackage& package, const std::string& part_name,
                                 std::uint64_t cap)
    : package_(package), part_name_(part_name), cap_(cap) {
  const auto index = package.find(part_name);
  if (!index) {
    throw Error(fmt::format("{}: the package has no part \"{}\"", package.path(), part_name));
  }
  file_ = zip_fopen_index(package.archive(), *index, 0);
  if (file_ == nullptr) {
    throw Error(fmt::format("{}: cannot open part \"{}\" of the package: {}", package.path(),
                            part_name, zip_strerror(package.archive())));
  }
}

ZipMemberStream::~ZipMemberStream() {
  if (file_ != nullptr) zip_fclose(file_);
}

std::int64_t ZipMemberStream::read(char* buffer, std::size_t size) {
  if (!failure_.empty()) return -1;
  // Ask for one byte more than the cap allows, so that passing it is seen.
  const std::uint64_t allowed = cap_ - unpacked_ + 1;
  const zip_int64_t count = zip_fread(file_, buffer, std::min<std::uint64_t>(size, allowed));
  if (count < 0) {
    failure_ = fmt::format("{}: damaged data in part \"{}\": {}", package_.path(), part_name_,
                           zip_error_strerror(zip_file_get_error(file_)));
    return -1;
  }
  unpacked_ += static_cast<std::uint64_t>(count);
  if (unpacked_ > cap_) {
    failure_ = fmt::format(
        "{}: part \"{}\" unpacks to more than {}, more than a workbook part may hold; refusing it "
        "as a likely zip bomb",
        package_.path(), part_name_, describe_size(cap_));
    return -1;
  }
  return count;
}

std::string describe_size(std::uint64_t bytes) {
  constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;
  constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;
  if (bytes >= kGiB && bytes % kGiB == 0) return fmt::format("{} GiB", bytes / kGiB);
  if (bytes >= kMiB && bytes % kMiB == 0) return fmt::format("{} MiB", bytes / kMiB);
  return fmt::format("{} bytes", bytes);
}

}  // namespace pellago
