#include "workbook/isolated_read.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>

#include "error.hpp"

namespace pellago {

namespace {

// The pipe carries one message per cell in use, then an end or a failure message.
enum class MessageKind : std::uint8_t { number, text, failure, end };

struct MessageHeader {
  MessageKind kind;
  std::uint32_t row;  // for a failure: the system error
  std::uint32_t column;
  std::uint32_t size;  // bytes of payload that follow: a double, text, or a failure message
};

void send(std::FILE* out, MessageKind kind, std::uint32_t row, std::uint32_t column,
          const void* payload, std::size_t size) {
  const MessageHeader header{kind, row, column, static_cast<std::uint32_t>(size)};
  std::fwrite(&header, sizeof header, 1, out);
  if (size > 0) std::fwrite(payload, 1, size, out);
}

void send_sheet(std::FILE* out, const Workbook& sheet) {
  for (int row = 1; row <= sheet.last_row(); ++row) {
    for (int column = 1; column <= sheet.last_column(); ++column) {
      const Cell& cell = sheet.cell(row, column);
      if (const auto* number = std::get_if<double>(&cell)) {
        send(out, MessageKind::number, row, column, number, sizeof *number);
      } else if (const auto* text = std::get_if<std::string>(&cell)) {
        send(out, MessageKind::text, row, column, text->data(), text->size());
      }
    }
  }
}

[[noreturn]] void run_child(int fd, const std::function<Workbook()>& read) {
  std::FILE* out = fdopen(fd, "wb");
  if (out == nullptr) _exit(1);
  try {
    send_sheet(out, read());
    send(out, MessageKind::end, 0, 0, nullptr, 0);
  } catch (const Error& error) {
    const std::string message = error.what();
    send(out, MessageKind::failure, static_cast<std::uint32_t>(error.system_error), 0,
         message.data(), message.size());
  } catch (const std::exception& error) {
    send(out, MessageKind::failure, 0, 0, error.what(), std::strlen(error.what()));
  }
  std::fflush(out);
  _exit(0);  // no exit handlers, no destructors of the parent's objects
}

// What came through the pipe: the sheet, or the failure the child reported.
struct Received {
  Workbook sheet;
  std::optional<Error> failure;
  bool complete = false;
};

Received receive(std::FILE* in) {
  Received received;
  MessageHeader header;
  std::string payload;
  while (std::fread(&header, sizeof header, 1, in) == 1) {
    payload.resize(header.size);
    if (header.size > 0 && std::fread(payload.data(), 1, header.size, in) != header.size) break;
    const int row = static_cast<int>(header.row);
    const int column = static_cast<int>(header.column);
    switch (header.kind) {
      case MessageKind::number: {
        double number = 0;
        std::memcpy(&number, payload.data(), std::min(sizeof number, payload.size()));
        received.sheet.set_cell(row, column, number);
        break;
      }
      case MessageKind::text:
        received.sheet.set_cell(row, column, payload);
        break;
      case MessageKind::failure:
        received.failure = Error(payload, static_cast<int>(header.row));
        received.complete = true;
        return received;
      case MessageKind::end:
        received.complete = true;
        return received;
    }
  }
  return received;
}

int wait_for(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

Workbook read_isolated(const std::string& path, const std::function<Workbook()>& read) {
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) {
    throw Error(fmt::format("{}: cannot start the reader: {}", path, std::strerror(errno)), errno);
  }
  std::fflush(nullptr);  // nothing buffered may be written twice
  const pid_t child = fork();
  if (child < 0) {
    const int error = errno;
    close(fds[0]);
    close(fds[1]);
    throw Error(fmt::format("{}: cannot start the reader: {}", path, std::strerror(error)), error);
  }
  if (child == 0) {
    close(fds[0]);
    run_child(fds[1], read);
  }
  close(fds[1]);
  std::FILE* in = fdopen(fds[0], "rb");
  Received received = in != nullptr ? receive(in) : Received{};
  if (in != nullptr) {
    std::fclose(in);
  } else {
    close(fds[0]);
  }
  const int status = wait_for(child);
  if (WIFSIGNALED(status)) {
    throw Error(fmt::format("{}: the reader crashed on this file ({}); it is damaged or crafted",
                            path, strsignal(WTERMSIG(status))));
  }
  if (received.failure) throw *received.failure;
  if (!received.complete) {
    throw Error(
        fmt::format("{}: the reader stopped early (exit status {}); the file is damaged or "
                    "crafted",
                    path, WEXITSTATUS(status)));
  }
  return std::move(received.sheet);
}

}  // namespace pellago
