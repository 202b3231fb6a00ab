#include "cli/progress_bar.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace pellago::cli {

namespace {

using namespace std::chrono_literals;

// A phase without a bar is shown once it has lasted this long; the bar is redrawn at most this
// often.
constexpr auto kPhaseDelay = 500ms;
constexpr auto kRedrawInterval = 100ms;

constexpr std::size_t kDefaultColumns = 80;
constexpr std::size_t kWidestBar = 30;

// A line filled to the last column wraps on some terminals: keep that column free.
std::size_t room_on_line() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col - 1u;
  if (const char* columns = std::getenv("COLUMNS")) {
    if (const int count = std::atoi(columns); count > 0) return static_cast<std::size_t>(count) - 1;
  }
  return kDefaultColumns - 1;
}

bool terminal_takes_escapes() {
  const char* term = std::getenv("TERM");
  return term != nullptr && *term != '\0' && std::string_view(term) != "dumb";
}

std::string_view phase_label(MergePhase phase) {
  switch (phase) {
    case MergePhase::reading_sheet:
      return "reading sheet";
    case MergePhase::reading_xml:
      return "reading XML";
    case MergePhase::merging_clips:
      return "merging clips";
    case MergePhase::writing:
      return "writing";
  }
  return {};
}

std::string bar(std::int64_t percent, std::size_t width) {
  const auto filled = static_cast<std::size_t>(percent) * width / 100;
  return fmt::format("[{:#<{}}{:.<{}}]", "", filled, "", width - filled);
}

// "merging clips [####......]  40% 4/10", dropping the label and then the bar when the room is
// short, and cutting what is left to the room.
std::string clip_line(std::int64_t value, std::int64_t max, std::int64_t percent,
                      std::size_t room) {
  const std::string counts = fmt::format("{:3}% {}/{}", percent, value, max);
  struct Layout {
    std::string prefix;
    std::size_t narrowest_bar;
  };
  const std::array<Layout, 2> layouts{
      {{fmt::format("{} ", phase_label(MergePhase::merging_clips)), 10}, {"", 3}}};
  for (const Layout& layout : layouts) {
    const std::size_t around = layout.prefix.size() + 2 + 1 + counts.size();
    if (room < around + layout.narrowest_bar) continue;
    const std::size_t width = std::min(kWidestBar, room - around);
    return fmt::format("{}{} {}", layout.prefix, bar(percent, width), counts);
  }
  return counts.substr(0, room);
}

}  // namespace

ProgressBar::ProgressBar()
    : escapes_(terminal_takes_escapes()),
      ticker_([this](std::stop_token stop) { show_slow_phases(stop); }) {}

ProgressBar::~ProgressBar() {
  ticker_.request_stop();
  ticker_.join();
  clear();
}

void ProgressBar::attach_to(Host& host) {
  host.progress = [this](const ProgressReport& report) { show(report); };
}

void ProgressBar::clear() {
  const std::scoped_lock lock(mutex_);
  waiting_phase_.reset();  // the slow-phase line stays away too
  clear_locked();
}

// A phase without a bar is waited for, and shown by the ticker once it is slow; the clips have
// their bar.
void ProgressBar::show(const ProgressReport& report) {
  const std::scoped_lock lock(mutex_);
  if (report.phase != MergePhase::merging_clips) {
    waiting_phase_ = report.phase;
    phase_began_ = Clock::now();
    return;
  }
  waiting_phase_.reset();
  draw_clips_locked(report.done, report.total);
}

void ProgressBar::draw_clips_locked(std::int64_t done, std::int64_t total) {
  const std::int64_t percent =
      total > 0 ? std::clamp<std::int64_t>(done * 100 / total, 0, 100) : 100;
  const auto now = Clock::now();
  const bool last = done >= total;
  const bool drawn = drawn_width_ > 0;
  if (percent == shown_percent_ || (!last && drawn && now - drawn_at_ < kRedrawInterval)) return;
  draw_locked(clip_line(done, total, percent, room_on_line()));
  shown_percent_ = percent;
  drawn_at_ = now;
}

void ProgressBar::show_slow_phases(std::stop_token stop) {
  std::unique_lock lock(mutex_);
  while (!stop.stop_requested()) {
    // Woken only by the stop request or the time.
    wake_.wait_for(lock, stop, kRedrawInterval, [] { return false; });
    if (stop.stop_requested() || !waiting_phase_) continue;
    const auto waited = Clock::now() - phase_began_;
    if (waited < kPhaseDelay) continue;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(waited).count();
    const std::string_view label = phase_label(*waiting_phase_);
    const std::string line =
        seconds == 0 ? std::string(label) : fmt::format("{} ({} s)", label, seconds);
    draw_locked(line.substr(0, room_on_line()));
  }
}

void ProgressBar::draw_locked(const std::string& line) {
  if (line == drawn_line_ && drawn_width_ > 0) return;
  // Blanks over what a longer line left behind, where the terminal cannot erase to the end.
  const std::size_t blanks = escapes_ ? 0 : drawn_width_ - std::min(drawn_width_, line.size());
  std::fputs(fmt::format("\r{}{:{}}{}", line, "", blanks, escapes_ ? "\033[K" : "").c_str(),
             stderr);
  std::fflush(stderr);
  drawn_line_ = line;
  drawn_width_ = std::max<std::size_t>(line.size(), 1);
}

void ProgressBar::clear_locked() {
  if (drawn_width_ == 0) return;
  if (escapes_) {
    std::fputs("\r\033[K", stderr);
  } else {
    std::fputs(fmt::format("\r{:{}}\r", "", drawn_width_).c_str(), stderr);
  }
  std::fflush(stderr);
  drawn_width_ = 0;
  drawn_line_.clear();
  shown_percent_ = -1;
}

}  // namespace pellago::cli
