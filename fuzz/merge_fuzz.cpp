// The whole merge of the example log sheet into a fuzzed document, written to a file.
#include "error.hpp"
#include "fuzz_file.hpp"
#include "merge/add_log_notes.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const pellago::fuzz::InputFile input(".xml");
  static const pellago::fuzz::InputFile output(".out.xml");
  try {
    pellago::add_log_notes(PELLAGO_SOURCE_DIR "/examples/log_sheet.xlsx", input.write(data, size),
                           output.path());
  } catch (const pellago::Error&) {
  }
  return 0;
}
