#pragma once

#include <zip.h>

#include <cstdint>
#include <optional>
#include <string>

namespace pellago {

// A zip package opened read-only with libzip. Owns the archive handle.
class ZipPackage {
 public:
  // Throws Error naming the file when libzip cannot open it as a zip archive.
  explicit ZipPackage(const std::string& path);
  ~ZipPackage();
  ZipPackage(const ZipPackage&) = delete;
  ZipPackage& operator=(const ZipPackage&) = delete;

  const std::string& path() const { return path_; }
  // Index of the member named part_name (exactly, else ignoring case, as part names are).
  std::optional<zip_uint64_t> find(const std::string& part_name) const;
  bool contains(const std::string& part_name) const { return find(part_name).has_value(); }
  zip_t* archive() const { return archive_; }

 private:
  std::string path_;
  zip_t* archive_ = nullptr;
};

// One member of a package, read in chunks. The number of bytes it unpacks to is counted as they
// come, and reading stops with a failure once it passes the cap: the sizes in the zip directory
// are not trusted. read() never throws, so that it can serve a C callback; it records why it
// failed instead.
class ZipMemberStream {
 public:
  // Throws Error when the member is missing or cannot be opened (encrypted, unknown compression).
  ZipMemberStream(const ZipPackage& package, const std::string& part_name, std::uint64_t cap);
  ~ZipMemberStream();
  ZipMemberStream(const ZipMemberStream&) = delete;
  ZipMemberStream& operator=(const ZipMemberStream&) = delete;

  // Fills up to size bytes of buffer; returns the count, 0 at the end, -1 on failure.
  std::int64_t read(char* buffer, std::size_t size);
  // Why the last read failed, as a complete message naming the file and part; empty if it did not.
  const std::string& failure() const { return failure_; }

 private:
  const ZipPackage& package_;
  std::string part_name_;
  std::uint64_t cap_;
  std::uint64_t unpacked_ = 0;
  zip_file_t* file_ = nullptr;
  std::string failure_;
};

// "1 GiB", "64 MiB" or "1000 bytes": a size limit as a user reads it.
std::string describe_size(std::uint64_t bytes);

}  // namespace pellago
