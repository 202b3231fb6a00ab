#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellago {

// One supported frame rate. fcp_rate is what timecode conversion is given: fractional for the NTSC
// rates, the whole number equal to timebase otherwise.
struct FrameRate {
  std::string type;
  int timebase;
  std::string ntsc;
  double fcp_rate;
};

using FrameRates = std::vector<FrameRate>;

// The seven rates the engine knows, in order. A host may supply its own table instead.
extern const FrameRates FRAME_RATES;

// The first entry whose timebase equals `timebase` and whose ntsc equals `ntsc` byte for byte.
std::optional<FrameRate> find_frame_rate(const FrameRates& rates, std::int64_t timebase,
                                         std::string_view ntsc);

}  // namespace pellago
