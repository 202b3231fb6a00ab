#include "document/libxml_errors.hpp"

#include <libxml/globals.h>

#include <algorithm>
#include <new>

namespace pellago {

namespace {

void ignore(void*, const char*, ...) {}

std::string one_line(const char* message) {
  std::string line = message ? message : "";
  std::replace(line.begin(), line.end(), '\n', ' ');
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

}  // namespace

LibxmlErrors::LibxmlErrors(RecoveredErrors* errors)
    : structured_(xmlStructuredError),
      structured_context_(xmlStructuredErrorContext),
      generic_(xmlGenericError),
      generic_context_(xmlGenericErrorContext) {
  xmlSetStructuredErrorFunc(errors, &LibxmlErrors::record);
  xmlSetGenericErrorFunc(nullptr, &ignore);
}

LibxmlErrors::~LibxmlErrors() {
  xmlSetStructuredErrorFunc(structured_context_, structured_);
  xmlSetGenericErrorFunc(generic_context_, generic_);
}

void LibxmlErrors::record(void* errors, xmlErrorPtr error) {
  auto* recovered = static_cast<RecoveredErrors*>(errors);
  if (!recovered || !error || error->level < XML_ERR_ERROR) return;
  if (recovered->count++ > 0) return;
  recovered->line = error->line;
  recovered->column = error->int2;
  try {
    recovered->message = one_line(error->message);
  } catch (const std::bad_alloc&) {
    // The place of the error is kept; its message cannot be.
  }
}

}  // namespace pellago
