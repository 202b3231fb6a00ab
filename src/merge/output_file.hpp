#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace pellago {

// The output path that means the process's standard output.
inline constexpr std::string_view kStandardOutput = "-";

// Receives the output in consecutive chunks.
using OutputSink = std::function<void(std::string_view)>;

// Throws Error, before anything is read or written, when `path` (after following its symbolic
// links) is a file that exists and is not a regular file (a device, a FIFO, a folder). Standard
// output is always a valid target.
void check_output_target(const std::string& path);
// As above, and also when `path` is the same file, by device and inode, as `sheet_path`.
void check_output_target(const std::string& path, const std::string& sheet_path);

// Replaces the file at `path` with what `write` hands its sink, without ever leaving it half
// written: the bytes go to a temporary file in the same folder, which is flushed to disk and
// renamed over `path`. A symbolic link at `path` is followed through its whole chain and the file
// it ends at is replaced; an existing file that is not a regular file is refused. A file that is
// replaced keeps its permission bits; a new one gets 0666 less the umask. On failure the temporary
// file is removed, `path` is left as it was, and Error names the path (and the errno).
// kStandardOutput writes straight to standard output.
void write_file_replacing(const std::string& path,
                          const std::function<void(const OutputSink&)>& write);

}  // namespace pellago
