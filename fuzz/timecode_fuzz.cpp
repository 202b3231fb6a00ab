// Timecode reading: to_frames at any rate and display format, and read_integer.
#include <fuzzer/FuzzedDataProvider.h>

#include "error.hpp"
#include "timecode/read_integer.hpp"
#include "timecode/to_frames.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const double rate =
      input.ConsumeBool()
          ? input.PickValueInArray({23.976, 24.0, 25.0, 29.97, 30.0, 50.0, 59.94, 60.0})
          : input.ConsumeFloatingPoint<double>();
  const std::string format = input.PickValueInArray<const char*>({"DF", "NDF", "", "df"});
  const std::string text = input.ConsumeRemainingBytesAsString();
  try {
    pellago::to_frames(text, rate, format);
  } catch (const pellago::Error&) {
  }
  try {
    pellago::read_integer(text);
  } catch (const pellago::Error&) {
  }
  return 0;
}
