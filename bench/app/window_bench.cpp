// Opens a log sheet and an XML export in the window, as the user does, and measures how long the
// window's event loop is kept from running: while the check reads the files and its results are
// shown, during a whole merge, from Cancel half way through a second merge until it ends, and
// while the window checks again after the sheet changed on disk.
// A timer asks to run every 10 ms; the longest wait between its runs is what a user would feel
// as the window not answering.
//   window_bench SHEET XML   (offscreen: QT_QPA_PLATFORM=offscreen)
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "app/main_window.hpp"
#include "app/worker_heaps.hpp"

namespace {

using pellago::app::MainWindow;

// The gaps between the runs of a 10 ms timer on the window's thread.
struct Gaps {
  Gaps() {
    timer.setInterval(10);
    QObject::connect(&timer, &QTimer::timeout, [this] {
      longest = std::max(longest, since.restart());
      ++ticks;
    });
  }
  void start() {
    longest = 0;
    ticks = 0;
    since.start();
    timer.start();
  }
  qint64 stop() {
    timer.stop();
    return std::max(longest, since.elapsed());
  }

  QTimer timer;
  QElapsedTimer since;
  qint64 longest = 0;
  long ticks = 0;
};

// Runs the event loop until `done` holds.
void wait_until(const std::function<bool()>& done) {
  while (!done()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

void report(const char* what, qint64 elapsed_ms, qint64 longest_gap_ms) {
  std::printf("%-28s %8.2f s   longest wait of the window %5lld ms\n", what, elapsed_ms / 1000.0,
              static_cast<long long>(longest_gap_ms));
}

}  // namespace

int main(int argc, char** argv) {
  pellago::app::pad_worker_heaps();
  QApplication application(argc, argv);
  if (argc != 3) {
    std::fprintf(stderr, "usage: window_bench SHEET XML\n");
    return 2;
  }
  MainWindow window;
  window.resize(1280, 800);
  window.show();
  Gaps gaps;
  QElapsedTimer clock;

  bool checked = false;
  QObject::connect(&window, &MainWindow::checked, [&] { checked = true; });
  gaps.start();
  clock.start();
  window.open_file(QString::fromLocal8Bit(argv[1]));
  window.open_file(QString::fromLocal8Bit(argv[2]));
  wait_until([&] { return checked; });
  report("check shown", clock.elapsed(), gaps.stop());

  bool ended = false;
  QObject::connect(&window, &MainWindow::merge_ended, [&] { ended = true; });
  const QString output = window.output_path();
  QFile::remove(output);
  gaps.start();
  clock.start();
  window.merge();
  wait_until([&] { return ended; });
  report("merge", clock.elapsed(), gaps.stop());
  if (!QFile::remove(output)) {
    std::fprintf(stderr, "window_bench: the merge wrote no %s\n", qPrintable(output));
    return 1;
  }

  ended = false;
  auto* progress = window.findChild<QProgressBar*>(QStringLiteral("progress"));
  window.merge();
  wait_until(
      [&] { return progress->maximum() > 0 && progress->value() >= progress->maximum() / 2; });
  gaps.start();
  clock.start();
  window.findChild<QPushButton*>(QStringLiteral("cancel"))->click();
  wait_until([&] { return ended; });
  report("cancel half way, to the end", clock.elapsed(), gaps.stop());
  if (QFile::exists(output)) {
    std::fprintf(stderr, "window_bench: a cancelled merge left %s\n", qPrintable(output));
    return 1;
  }

  // The sheet saved again: the window reads both files again and replaces what it shows.
  checked = false;
  gaps.start();
  clock.start();
  QFile sheet(QString::fromLocal8Bit(argv[1]));
  if (!sheet.open(QIODevice::ReadOnly)) return 1;
  const QByteArray bytes = sheet.readAll();
  sheet.close();
  if (!sheet.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
      sheet.write(bytes) != bytes.size()) {
    return 1;
  }
  sheet.close();
  wait_until([&] { return checked; });
  report("check again, shown", clock.elapsed(), gaps.stop());
  return 0;
}
