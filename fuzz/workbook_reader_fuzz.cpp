// A workbook reader (.xls or .xlsx, as PELLAGO_FUZZ_KIND says, a SheetKind) and the log-sheet
// reader over whatever it reads.
#include "error.hpp"
#include "fuzz_file.hpp"
#include "sheet/log_sheet.hpp"
#include "workbook/workbook.hpp"

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
