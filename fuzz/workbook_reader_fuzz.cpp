// A workbook reader (.xls or .xlsx, as PELLAGO_FUZZ_KIND says, a SheetKind) and the log-sheet
// reader over whatever it reads.
#include <pthread.h>
#include <sanitizer/common_interface_defs.h>

#include <csignal>

#include "error.hpp"
#include "fuzz_file.hpp"
#include "merge/log_sheet.hpp"
#include "workbook/workbook.hpp"

namespace {

// The .xls reader runs FreeXL in a child process so that a crash there costs an Error, not the
// caller. In that child, libFuzzer's crash handling is undone: a crash contained by design is
// not saved as a crashing input, and the run goes on; a crash in this process still is.
void forget_crash_handling() {
  __sanitizer_set_death_callback(nullptr);
  for (int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE}) std::signal(signal, SIG_DFL);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  pthread_atfork(nullptr, nullptr, forget_crash_handling);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const pellago::fuzz::InputFile input(PELLAGO_FUZZ_EXTENSION);
  try {
    const pellago::Workbook workbook =
        pellago::open_workbook(input.write(data, size), pellago::SheetKind::PELLAGO_FUZZ_KIND);
    pellago::read_log_rows(workbook, pellago::read_header_row(workbook));
  } catch (const pellago::Error&) {
  }
  return 0;
}
