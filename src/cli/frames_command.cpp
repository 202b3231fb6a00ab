#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "timecode/to_frames.hpp"

namespace pellago::cli {

namespace {

struct FramesArguments {
  std::string timecode;
  double rate = 0;
  std::string display_format;
};

// NaN and the infinities are numbers to the option parser but no frame rate.
const CLI::Validator kFiniteRate(
    [](std::string& text) {
      double rate = 0;
      return CLI::detail::lexical_cast(text, rate) && std::isfinite(rate)
                 ? std::string()
                 : fmt::format("{} is not a number of frames per second", text);
    },
    "", "finite rate");

// Warnings on standard error for arguments that convert, as every text does, but not as a person
// would expect: the count printed stays the one the merge would use.
void warn_about_unusual_input(const FramesArguments& arguments) {
  // Rates beyond any real one are kept within what llround can return.
  const std::int64_t frame_base = std::llround(std::clamp(arguments.rate, -1e12, 1e12));
  if (!is_timecode(arguments.timecode, frame_base)) {
    std::fputs(fmt::format("pellago: warning: \"{}\" is not a timecode at {} frames per second "
                           "(hours:minutes:seconds:frames, minutes and seconds below 60, frames "
                           "below {}, or a number); fields without digits count as 0\n",
                           arguments.timecode, frame_base, frame_base)
                   .c_str(),
               stderr);
  }
  if (!counts_drop_frames(arguments.display_format) && arguments.display_format != "NDF") {
    std::fputs(fmt::format("pellago: warning: \"{}\" is not DF, which is compared exactly: every "
                           "frame is counted, without drop frames\n",
                           arguments.display_format)
                   .c_str(),
               stderr);
  }
}

}  // namespace

void add_frames_command(CLI::App& app, int& status) {
  CLI::App* frames =
      app.add_subcommand("frames", "Print the frame count of a timecode, as the merge counts it");
  auto arguments = std::make_shared<FramesArguments>();
  frames
      ->add_option("TIMECODE", arguments->timecode,
                   "The timecode as written in the log sheet: hours, minutes, seconds and frames "
                   "separated by \":\", \";\" or \".\" (01:00:00;00, 01.00.00.12, 02:03:04), a "
                   "number with a point (1000012.0 is 01:00:00:12, 12.5 is 12 seconds 5 frames) "
                   "or a bare frame count (250)")
      ->required();
  frames
      ->add_option("RATE", arguments->rate,
                   "Frames per second, rounded to a whole number: 23.976, 24, 25, 29.97, 30, "
                   "59.94 or 60")
      ->required()
      ->check(kFiniteRate);
  frames
      ->add_option("FORMAT", arguments->display_format,
                   "DF for drop-frame counting; anything else, normally NDF, counts every frame")
      ->required();
  frames->footer(
      "The count is from 00:00:00:00, as the merge converts in and out points, markers and "
      "auxiliary timecodes.\n\n"
      "Examples:\n"
      "  pellago frames '01:00:00;00' 29.97 DF    prints 107892\n"
      "  pellago frames 01:00:00:00 25 NDF        prints 90000\n"
      "  pellago frames 1000012.0 25 NDF          prints 90012\n\n"
      "Quote a timecode with \";\" from the shell. Every text gives a number: fields without "
      "digits count as 0, and a warning on standard error says when the timecode is not one, or "
      "when FORMAT is neither DF nor NDF. Put -- before the arguments when the timecode starts "
      "with \"-\".\n\n"
      "Exit status: 0 done, 2 wrong usage.");
  frames->callback([arguments, &status] {
    warn_about_unusual_input(*arguments);
    const std::int64_t count =
        to_frames(arguments->timecode, arguments->rate, arguments->display_format);
    std::fputs(fmt::format("{}\n", count).c_str(), stdout);
    status = kExitOk;
  });
}

}  // namespace pellago::cli
