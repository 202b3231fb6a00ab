#pragma once

#include <libxml/xmlerror.h>

#include <cstddef>
#include <string>

namespace pellago {

// The errors a recovering parse repaired: how many, and where the first one was (1-based line
// and column; 0 when libxml2 did not say).
struct RecoveredErrors {
  std::size_t count = 0;
  int line = 0;
  int column = 0;
  std::string message;  // the first error's, one line
};

// While it lives, every message libxml2 raises on this thread goes to `errors` (or nowhere when
// it is null) instead of standard error; the handlers in place before are put back at the end.
class LibxmlErrors {
 public:
  explicit LibxmlErrors(RecoveredErrors* errors = nullptr);
  ~LibxmlErrors();
  LibxmlErrors(const LibxmlErrors&) = delete;
  LibxmlErrors& operator=(const LibxmlErrors&) = delete;

  // Counts an error (warnings are not counted) and keeps the first one's place and message.
  static void record(void* errors, xmlErrorPtr error);

 private:
  xmlStructuredErrorFunc structured_;
  void* structured_context_;
  xmlGenericErrorFunc generic_;
  void* generic_context_;
};

}  // namespace pellago
