#include "timecode/frame_rate.hpp"

namespace pellago {

const FrameRates FRAME_RATES = {
    {"24P (24fps)", 24, "TRUE", 23.976},   {"Film (24fps)", 24, "FALSE", 24},
    {"PAL (25fps)", 25, "FALSE", 25},      {"NTSC/HD (29.97fps)", 30, "TRUE", 29.97},
    {"Video/HD (30fps)", 30, "FALSE", 30}, {"HD (59.94fps)", 60, "TRUE", 59.94},
    {"HD (60fps)", 60, "FALSE", 60},
};

std::optional<FrameRate> find_frame_rate(const FrameRates& rates, std::int64_t timebase,
                                         std::string_view ntsc) {
  for (const FrameRate& rate : rates) {
    if (rate.timebase == timebase && rate.ntsc == ntsc) return rate;
  }
  return std::nullopt;
}

}  // namespace pellago
