#include <QApplication>
#include <QCommandLineParser>

#include "app/main_window.hpp"
#include "app/worker_heaps.hpp"

int main(int argc, char** argv) {
  pellago::app::pad_worker_heaps();
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("pellago-app"));
  QApplication::setOrganizationName(QStringLiteral("Pellago"));
  QApplication::setApplicationDisplayName(QStringLiteral("Pellago"));
  QGuiApplication::setDesktopFileName(QStringLiteral("pellago-app"));

  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral(
      "Merges the log notes of an Excel log sheet into a Final Cut Pro XML export."));
  parser.addHelpOption();
  parser.addPositionalArgument(QStringLiteral("SHEET"),
                               QStringLiteral("The log sheet (.xls or .xlsx)"), "[SHEET]");
  parser.addPositionalArgument(QStringLiteral("XML"), QStringLiteral("The XML export"), "[XML]");
  parser.process(application);

  pellago::app::MainWindow window;
  for (const QString& path : parser.positionalArguments()) window.open_file(path);
  window.show();
  return QApplication::exec();
}
