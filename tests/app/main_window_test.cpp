#include "app/main_window.hpp"

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>
#include <QtTest>

namespace pellago::app {

namespace {

const QString kSheet = QStringLiteral(PELLAGO_SOURCE_DIR "/examples/log_sheet.xlsx");
const QString kProject = QStringLiteral(PELLAGO_SOURCE_DIR "/examples/project.xml");
constexpr int kWaitMs = 120'000;

template <typename T>
T* child(const MainWindow& window, const char* name) {
  T* found = window.findChild<T*>(QLatin1String(name));
  if (!found) qFatal("the window has no %s", name);
  return found;
}

QByteArray read_all(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return file.readAll();
}

void write_all(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
  QCOMPARE(file.write(bytes), bytes.size());
}

// Runs `pellago ARGUMENTS` and gives its standard error; standard output is dropped.
QString run_cli(const QStringList& arguments) {
  QProcess cli;
  cli.start(QStringLiteral(PELLAGO_CLI), arguments);
  if (!cli.waitForFinished(kWaitMs)) return QStringLiteral("pellago did not finish");
  return QString::fromUtf8(cli.readAllStandardError()).trimmed();
}

// Drops the files on the window as a file manager does.
void drop_files(MainWindow& window, const QStringList& paths) {
  QMimeData mime;
  QList<QUrl> urls;
  for (const QString& path : paths) urls << QUrl::fromLocalFile(path);
  mime.setUrls(urls);
  const QPointF centre(window.width() / 2.0, window.height() / 2.0);
  QDragEnterEvent enter(centre.toPoint(), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &enter);
  QVERIFY(enter.isAccepted());
  QDropEvent drop(centre, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &drop);
}

QString cell(const QTableView* view, int row, int column) {
  return view->model()->index(row, column).data().toString();
}

QString header(const QTableView* view, int column) {
  return view->model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
}

// Answers the next question box with `button` once it shows.
void answer_next_question(QMessageBox::StandardButton button) {
  QTimer::singleShot(0, [button] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box) qFatal("no question was asked");
    box->button(button)->click();
  });
}

}  // namespace

class MainWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void init() { QSettings().clear(); }

  // Both example files dropped at once, the export first: each goes where its kind says. The table
  // shows every row with the clip it names, the findings list the check's, the output defaults to
  // NAME_logged.xml beside the export and the folders are remembered. The window's merge writes
  // the bytes the CLI writes; an existing output is replaced only once the user says so.
  void showsTheSheetAndFindingsAndMergesAsTheCliDoes() {
    QTemporaryDir scratch;
    const QString output = scratch.filePath(QStringLiteral("merged.xml"));
    const QString cli_output = scratch.filePath(QStringLiteral("cli.xml"));
    QCOMPARE(run_cli({QStringLiteral("merge"), kSheet, kProject, cli_output}), QString());

    MainWindow window;
    QSignalSpy checked(&window, &MainWindow::checked);
    drop_files(window, {kProject, kSheet});
    QVERIFY(checked.wait(kWaitMs));
    QCOMPARE(child<QLineEdit>(window, "sheet")->text(), kSheet);
    QCOMPARE(child<QLineEdit>(window, "xml")->text(), kProject);
    QCOMPARE(window.output_path(),
             QStringLiteral(PELLAGO_SOURCE_DIR "/examples/project_logged.xml"));
    QCOMPARE(QSettings().value("folders/sheet").toString(),
             QStringLiteral(PELLAGO_SOURCE_DIR "/examples"));

    const auto* table = child<QTableView>(window, "sheetTable");
    QCOMPARE(table->model()->rowCount(), 8);
    QCOMPARE(header(table, 0), QStringLiteral("Row"));
    QCOMPARE(header(table, 1), QStringLiteral("Clip"));
    QCOMPARE(header(table, table->model()->columnCount() - 1), QStringLiteral("Markers"));
    QCOMPARE(cell(table, 1, 1), QStringLiteral("A001_C002_0611AB"));
    QCOMPARE(cell(table, 1, 3), QStringLiteral("Boat arrives"));
    QCOMPARE(cell(table, 7, 0), QStringLiteral("9"));
    QCOMPARE(cell(table, 7, 1), QStringLiteral("no clip"));
    QVERIFY(table->model()
                ->index(7, 1)
                .data(Qt::ToolTipRole)
                .toString()
                .contains(QStringLiteral("no clip is named \"A002_C001_0611AB\"")));

    const auto* findings = child<QTableView>(window, "findingsTable");
    QCOMPARE(findings->model()->rowCount(), 4);
    QCOMPARE(cell(findings, 3, 0), QStringLiteral("warning"));
    QCOMPARE(cell(findings, 3, 2), QStringLiteral("A \"Name\""));
    QCOMPARE(cell(findings, 3, 4), QStringLiteral("no clip is named \"A002_C001_0611AB\""));
    QCOMPARE(cell(findings, 3, 5),
             QStringLiteral("did you mean \"A001_C001_0611AB\" or \"A001_C002_0611AB\"?"));
    QCOMPARE(child<QLabel>(window, "checkSummary")->text(),
             QStringLiteral("4 findings - a merge would visit 6 clips (5 changed, 3 subclips made, "
                            "6 markers added); 1 sheet row matched no clip"));

    window.set_output(output);
    QSignalSpy ended(&window, &MainWindow::merge_ended);
    QTest::mouseClick(child<QPushButton>(window, "merge"), Qt::LeftButton);
    QVERIFY(ended.wait(kWaitMs));
    QCOMPARE(read_all(output), read_all(cli_output));
    QVERIFY(child<QLabel>(window, "message")
                ->text()
                .startsWith(QStringLiteral(
                    "Merged 6 clips (5 changed, 3 subclips made, 6 markers added)")));
    QVERIFY(child<QPushButton>(window, "showInFolder")->isEnabled());

    write_all(output, "kept");
    answer_next_question(QMessageBox::No);
    window.merge();
    QCOMPARE(ended.count(), 1);
    QCOMPARE(read_all(output), QByteArray("kept"));
    answer_next_question(QMessageBox::Yes);
    window.merge();
    QVERIFY(ended.wait(kWaitMs));
    QCOMPARE(read_all(output), read_all(cli_output));
  }

  // Cancel once the clips are being merged, on an export large enough that the merge is still
  // running when the window has shown its first progress: the merge stops, nothing is written.
  void cancelWritesNothing() {
    QTemporaryDir scratch;
    const QString project = scratch.filePath(QStringLiteral("large.xml"));
    const QString sheet = scratch.filePath(QStringLiteral("large.xlsx"));
    QCOMPARE(QProcess::execute(QStringLiteral(MAKE_MERGE_BENCH),
                               {project, sheet, QStringLiteral("20000")}),
             0);
    MainWindow window;
    QSignalSpy checked(&window, &MainWindow::checked);
    window.open_file(sheet);
    window.open_file(project);
    QVERIFY(checked.wait(kWaitMs));

    const QString output = window.output_path();
    QSignalSpy ended(&window, &MainWindow::merge_ended);
    window.merge();
    const auto* progress = child<QProgressBar>(window, "progress");
    QTRY_VERIFY_WITH_TIMEOUT(progress->maximum() == 20000 && progress->value() > 0, kWaitMs);
    QTest::mouseClick(child<QPushButton>(window, "cancel"), Qt::LeftButton);
    QVERIFY(ended.wait(kWaitMs));
    QVERIFY(child<QLabel>(window, "message")->text().startsWith(QStringLiteral("Cancelled after")));
    QVERIFY(!QFile::exists(output));
    QCOMPARE(QDir(scratch.path()).entryList(QDir::Files).size(), 2);
  }

  // A check and a merge that fail at a sheet row (row 6, not the first) select that row in the
  // sheet table; the merge says what the CLI says and writes nothing; the window re-reads the
  // export once it is mended on disk.
  void failureIsWordedAsTheCliWordsItAtItsRow() {
    QTemporaryDir scratch;
    const QString broken = scratch.filePath(QStringLiteral("broken.xml"));
    QByteArray xml = read_all(kProject);
    xml.replace("<duration>1798</duration>", "");
    write_all(broken, xml);
    const QString cli_error = run_cli(
        {QStringLiteral("merge"), kSheet, broken, scratch.filePath(QStringLiteral("cli.xml"))});
    QVERIFY(cli_error.startsWith(QStringLiteral("pellago: clip ")));

    MainWindow window;
    QSignalSpy checked(&window, &MainWindow::checked);
    window.open_file(kSheet);
    window.open_file(broken);
    QVERIFY(checked.wait(kWaitMs));
    const auto* findings = child<QTableView>(window, "findingsTable");
    QCOMPARE(cell(findings, findings->model()->rowCount() - 1, 0), QStringLiteral("error"));
    auto* table = child<QTableView>(window, "sheetTable");
    const QModelIndexList row_6 =
        table->model()->match(table->model()->index(0, 0), Qt::DisplayRole, QStringLiteral("6"));
    QCOMPARE(row_6.size(), 1);
    QCOMPARE(table->selectionModel()->selectedRows(), row_6);

    table->clearSelection();
    QSignalSpy ended(&window, &MainWindow::merge_ended);
    window.merge();
    QVERIFY(ended.wait(kWaitMs));
    QCOMPARE(QStringLiteral("pellago: ") + child<QLabel>(window, "message")->text(), cli_error);
    QCOMPARE(table->selectionModel()->selectedRows(), row_6);
    QVERIFY(!QFile::exists(window.output_path()));

    write_all(broken, read_all(kProject));
    QVERIFY(checked.wait(kWaitMs));
    QCOMPARE(findings->model()->rowCount(), 4);
  }
};

}  // namespace pellago::app

QTEST_MAIN(pellago::app::MainWindowTest)
#include "main_window_test.moc"
