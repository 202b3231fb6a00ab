#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "merge/add_log_notes.hpp"

namespace pellago::cli {

// One line on standard error, a terminal, that follows a merge: the phase it is in ("reading XML
// (3 s)") once that phase has taken a while, then a bar of the clips visited. Every line fits the
// terminal's width; with TERM=dumb (or no TERM) it is drawn and cleared with carriage returns and
// blanks alone, no escape sequences. The line is cleared when the bar goes away.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  // Points the host's progress callback at this bar.
  void attach_to(Host& host);

  // Erases the line and forgets the phase being waited for; the next progress report draws it
  // again.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  void show(const ProgressReport& report);
  void draw_clips_locked(std::int64_t done, std::int64_t total);
  void show_slow_phases(std::stop_token stop);
  void draw_locked(const std::string& line);
  void clear_locked();

  const bool escapes_;  // the terminal erases to the end of the line on "\033[K"
  std::mutex mutex_;
  std::condition_variable_any wake_;
  // The phase being waited for, when it is one without a bar, and when it began.
  std::optional<MergePhase> waiting_phase_;
  Clock::time_point phase_began_;

  std::int64_t shown_percent_ = -1;
  Clock::time_point drawn_at_;
  std::size_t drawn_width_ = 0;  // 0: nothing on the line
  std::string drawn_line_;

  // Last member: started once everything it reads is set up, stopped first.
  std::jthread ticker_;
};

}  // namespace pellago::cli
