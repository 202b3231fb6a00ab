// The log-sheet reader over an in-memory workbook: cells of any kind at any place, any text.
#include <fuzzer/FuzzedDataProvider.h>

#include "error.hpp"
#include "sheet/log_sheet.hpp"
#include "workbook/workbook.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  pellago::Workbook workbook;
  while (input.remaining_bytes() > 0) {
    // Mostly the first rows and columns, where headers and markers meet; now and then further
    // (not to the sheet's last row: every row up to the last is read, which makes a run slow).
    const bool far = input.ConsumeIntegralInRange(0, 15) == 0;
    const int row = input.ConsumeIntegralInRange(1, far ? 2000 : 6);
    const int column = input.ConsumeIntegralInRange(1, far ? 300 : 12);
    switch (input.ConsumeIntegralInRange(0, 2)) {
      case 0:
        workbook.set_cell(row, column, input.ConsumeFloatingPoint<double>());
        break;
      case 1:
        workbook.set_cell(row, column,
                          input.PickValueInArray<const char*>(
                              {"Name", "Marker Timecode", "Marker Name", "Marker Comment",
                               "Marker Color", "In", "Out", "Subclip Name", "Good", "Aux TC 1"}));
        break;
      default:
        workbook.set_cell(row, column, input.ConsumeRandomLengthString(64));
        break;
    }
  }
  try {
    pellago::read_log_rows(workbook, pellago::read_header_row(workbook));
  } catch (const pellago::Error&) {
  }
  return 0;
}
