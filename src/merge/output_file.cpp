#include "merge/output_file.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "error.hpp"

namespace pellago {

namespace {

namespace fs = std::filesystem;

// As many links as the kernel follows before it gives up with ELOOP.
constexpr int kMaxLinks = 40;

[[noreturn]] void fail(const std::string& what, int error) {
  throw Error(fmt::format("cannot {}: {}", what, std::strerror(error)), error);
}

// The path a chain of symbolic links ends at; a relative link is taken from the link's folder.
fs::path follow_links(const std::string& path) {
  fs::path current = path;
  for (int hops = 0; hops < kMaxLinks; ++hops) {
    struct stat status;
    if (lstat(current.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return current;
    std::error_code error;
    const fs::path target = fs::read_symlink(current, error);
    if (error) fail(fmt::format("follow the link \"{}\"", current.string()), error.value());
    current = target.is_absolute() ? target : current.parent_path() / target;
  }
  fail(fmt::format("follow the links from \"{}\"", path), ELOOP);
}

// The status of the file at `path`, or nullopt when there is none.
std::optional<struct stat> status_of(const fs::path& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

// `target` is where the links from `output` end as they read; the kernel's own resolution of
// `output` is asked too, for links whose text is no path, such as /dev/stdout on a pipe.
void refuse_unless_regular(const fs::path& target, const std::string& output) {
  for (const fs::path& path : {target, fs::path(output)}) {
    const auto status = status_of(path);
    if (status && !S_ISREG(status->st_mode)) {
      throw Error(fmt::format("cannot write \"{}\": it exists and is not a regular file", output));
    }
  }
}

// Writes every byte to `fd`, or throws Error naming `output`.
void write_all(int fd, std::string_view bytes, const std::string& output) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(fmt::format("write \"{}\"", output), errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

// The permission bits of the file being replaced, or those a new file would be created with.
mode_t permissions_for(const fs::path& target) {
  struct stat status;
  if (stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
  // The umask can only be read by setting it: it is put back at once.
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// A file created next to the target; removed again unless it has been renamed over the target.
class TemporaryFile {
 public:
  TemporaryFile(const fs::path& target, const std::string& output) : output_(output) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string pattern = (folder / fmt::format(".{}.XXXXXX", target.filename().string())).string();
    fd_ = mkstemp(pattern.data());
    if (fd_ < 0) {
      fail(
          fmt::format("create a temporary file in \"{}\" to write \"{}\"", folder.string(), output),
          errno);
    }
    path_ = pattern;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (fd_ >= 0) close(fd_);
    if (!path_.empty()) unlink(path_.c_str());
  }

  void write_all(std::string_view bytes) { pellago::write_all(fd_, bytes, output_); }

  void finish(mode_t permissions) {
    if (fsync(fd_) != 0) fail(fmt::format("write \"{}\"", output_), errno);
    if (fchmod(fd_, permissions) != 0)
      fail(fmt::format("set the permissions of \"{}\"", output_), errno);
    const int fd = fd_;
    fd_ = -1;
    if (close(fd) != 0) fail(fmt::format("write \"{}\"", output_), errno);
  }

  void rename_over(const fs::path& target) {
    if (std::rename(path_.c_str(), target.c_str()) != 0) {
      fail(fmt::format("replace \"{}\"", output_), errno);
    }
    path_.clear();
  }

 private:
  std::string output_;
  std::string path_;
  int fd_ = -1;
};

// Makes the rename itself durable; a folder that cannot be synced leaves the file written anyway.
void sync_folder(const fs::path& target) {
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

}  // namespace

void check_output_target(const std::string& path) {
  if (path == kStandardOutput) return;
  refuse_unless_regular(follow_links(path), path);
}

void check_output_target(const std::string& path, const std::string& sheet_path) {
  if (path == kStandardOutput) return;
  const fs::path target = follow_links(path);
  refuse_unless_regular(target, path);
  const auto output = status_of(target);
  const auto sheet = status_of(sheet_path);
  if (output && sheet && output->st_dev == sheet->st_dev && output->st_ino == sheet->st_ino) {
    throw Error(
        fmt::format("cannot write \"{}\": it is the log sheet \"{}\" itself", path, sheet_path));
  }
}

void write_file_replacing(const std::string& path,
                          const std::function<void(const OutputSink&)>& write) {
  if (path == kStandardOutput) {
    write([](std::string_view bytes) { write_all(STDOUT_FILENO, bytes, "standard output"); });
    return;
  }
  const fs::path target = follow_links(path);
  refuse_unless_regular(target, path);
  const mode_t permissions = permissions_for(target);
  TemporaryFile file(target, path);
  write([&file](std::string_view bytes) { file.write_all(bytes); });
  file.finish(permissions);
  file.rename_over(target);
  sync_folder(target);
}

}  // namespace pellago
