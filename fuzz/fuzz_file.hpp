#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace pellago::fuzz {

// A file of this process under /tmp that holds each input in turn, for the readers that take a
// path. Removed at exit.
class InputFile {
 public:
  explicit InputFile(const std::string& extension)
      : path_("/tmp/pellago-fuzz-" + std::to_string(getpid()) + extension) {}
  ~InputFile() { std::remove(path_.c_str()); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& write(const std::uint8_t* data, std::size_t size) const {
    std::FILE* file = std::fopen(path_.c_str(), "wb");
    if (file) {
      std::fwrite(data, 1, size, file);
      std::fclose(file);
    }
    return path_;
  }

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace pellago::fuzz
