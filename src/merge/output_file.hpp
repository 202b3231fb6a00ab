#pragma once

#include <string>
#include <string_view>

namespace pellago {

// Replaces the file at `path` with `bytes` without ever leaving it half written: the bytes go to a
// temporary file in the same folder, which is flushed to disk and renamed over `path`. A symbolic
// link at `path` is followed through its whole chain and the file it ends at is replaced. A file
// that is replaced keeps its permission bits; a new one gets 0666 less the umask. On failure the
// temporary file is removed, `path` is left as it was, and Error names the path and the errno.
void write_file_replacing(const std::string& path, std::string_view bytes);

}  // namespace pellago
