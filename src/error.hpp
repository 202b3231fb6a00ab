#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace pellago {

// A column of the sheet as a spreadsheet shows it.
struct Column {
  std::string header;  // the header text of row 1
  std::string letter;  // "A", "B", ... "AA"
};

// A clip of the document.
struct ClipRef {
  std::string name;
  std::optional<std::string> id;  // none when the clip has no id attribute
};

// The one exception type of the engine. The message is complete and meant for the user: it says
// what was being done, to what, and what was missing. system_error is the errno of a failed
// system call (a file that cannot be opened, read or written), 0 for every other failure, so that
// a front end can report it as the matching system error. row, column and clip say where in the
// sheet and the document the failure arose, when that is known, for a front end to point at (the
// message names them too).
struct Error : std::runtime_error {
  explicit Error(const std::string& message, int system_error = 0)
      : std::runtime_error(message), system_error(system_error) {}

  // `cause` again under a message that adds to its own: the errno and the places stay.
  Error(const std::string& message, const Error& cause)
      : std::runtime_error(message),
        system_error(cause.system_error),
        row(cause.row),
        column(cause.column),
        clip(cause.clip) {}

  int system_error;
  std::optional<int> row;        // the sheet row as the spreadsheet numbers it (2 = first data row)
  std::optional<Column> column;  // the sheet column of the cell at fault
  std::optional<ClipRef> clip;   // the clip being merged
};

}  // namespace pellago
