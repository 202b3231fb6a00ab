#include "app/main_window.hpp"

#include <QAction>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QTableView>
#include <QThreadPool>
#include <QUrl>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>
#include <exception>
#include <utility>

#include "check/check.hpp"
#include "error.hpp"
#include "merge/merge_document.hpp"
#include "merge/messages.hpp"
#include "workbook/workbook.hpp"

namespace pellago::app {

namespace {

constexpr const char* kSheetFolder = "folders/sheet";
constexpr const char* kXmlFolder = "folders/xml";
constexpr const char* kOutputFolder = "folders/output";
constexpr int kRecheckDelayMs = 300;
constexpr qint64 kProgressSteps = 1000;  // the most progress updates a merge sends the window

std::string local_path(const QString& path) { return QFile::encodeName(path).toStdString(); }

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

bool is_log_sheet(const QString& path) {
  return log_sheet_kind(local_path(path), default_rules()) != SheetKind::not_a_log_sheet;
}

// Runs on the worker thread. The report is shared, not copied, with the window's tables: on a
// large project, copying it would stall the window.
std::shared_ptr<const CheckReport> check_files(const std::string& sheet, const std::string& xml) {
  try {
    return std::make_shared<const CheckReport>(
        check(sheet, xml, CheckOptions{.sheet = true, .rules = default_rules()}));
  } catch (const std::exception& failure) {
    auto report = std::make_shared<CheckReport>();
    report->merge.outcome = Outcome::merged;
    report->error = failure_message(failure);
    return report;
  }
}

// Runs on the worker thread: the clips visited go to the window as queued calls, at most
// kProgressSteps of them.
std::function<void(const ProgressReport&)> post_progress(
    QObject* window, std::function<void(qint64, qint64)> show_progress) {
  return [window, show_progress = std::move(show_progress),
          shown_step = qint64{-1}](const ProgressReport& report) mutable {
    if (report.phase != MergePhase::merging_clips) return;
    const qint64 step = report.total > 0 ? report.done * kProgressSteps / report.total : 0;
    if (step == shown_step) return;
    shown_step = step;
    QMetaObject::invokeMethod(
        window, [show_progress, report] { show_progress(report.done, report.total); },
        Qt::QueuedConnection);
  };
}

// Runs on the worker thread; the window's Cancel sets `cancel`.
MergeResult run_merge(const std::string& sheet, const std::string& xml, const std::string& output,
                      std::shared_ptr<std::atomic<bool>> cancel, QObject* window,
                      std::function<void(qint64, qint64)> show_progress) {
  Host host;
  host.rules = default_rules();
  host.progress = post_progress(window, std::move(show_progress));
  host.cancel_requested = [cancel] { return cancel->load(); };
  try {
    return {add_log_notes(sheet, xml, output, host), {}, {}};
  } catch (const std::exception& failure) {
    const auto* error = dynamic_cast<const Error*>(&failure);
    return {std::nullopt, text(failure_message(failure)), error ? error->row : std::nullopt};
  }
}

// The sheet row that a merge the check ran would fail at, when its error names one.
std::optional<int> failing_row(const CheckReport& report) {
  if (!report.error || report.findings.empty()) return std::nullopt;
  const Finding& last = report.findings.back();
  return last.kind == FindingKind::merge_fails ? last.row : std::nullopt;
}

QString counted(std::size_t count, const QString& one, const QString& many) {
  return (count == 1 ? one : many).arg(count);
}

QString merge_counts(const MergeReport& report) {
  return QObject::tr("%1 (%2 changed, %3, %4); %5")
      .arg(counted(report.clips_visited, QObject::tr("%1 clip"), QObject::tr("%1 clips")))
      .arg(report.clips_changed)
      .arg(counted(report.subclips_made, QObject::tr("%1 subclip made"),
                   QObject::tr("%1 subclips made")))
      .arg(counted(report.markers_added, QObject::tr("%1 marker added"),
                   QObject::tr("%1 markers added")))
      .arg(counted(report.rows_unmatched, QObject::tr("%1 sheet row matched no clip"),
                   QObject::tr("%1 sheet rows matched no clip")));
}

QTableView* make_table(QAbstractItemModel* model, const QString& name) {
  auto* view = new QTableView;
  view->setObjectName(name);
  view->setModel(model);
  view->setSelectionBehavior(QAbstractItemView::SelectRows);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view->setAlternatingRowColors(false);
  view->setWordWrap(false);
  view->setAcceptDrops(false);
  view->verticalHeader()->hide();
  view->horizontalHeader()->setHighlightSections(false);
  return view;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
  setWindowTitle(tr("Pellago"));
  setAcceptDrops(true);
  build_menus();

  auto* central = new QWidget;
  auto* layout = new QVBoxLayout(central);
  layout->addWidget(build_inputs());
  layout->addWidget(build_tables(), 1);
  layout->addWidget(build_merge_bar());
  setCentralWidget(central);
  resize(1180, 720);

  recheck_timer_.setSingleShot(true);
  recheck_timer_.setInterval(kRecheckDelayMs);
  connect(&recheck_timer_, &QTimer::timeout, this, &MainWindow::start_check);
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &MainWindow::file_changed);
  connect(&check_watcher_, &QFutureWatcher<std::shared_ptr<const CheckReport>>::finished, this,
          [this] {
            if (check_again_) {
              start_check();
              return;
            }
            show_check(check_watcher_.result());
          });
  connect(&merge_watcher_, &QFutureWatcher<MergeResult>::finished, this,
          [this] { show_merge_result(merge_watcher_.result()); });
}

MainWindow::~MainWindow() {
  if (cancel_) cancel_->store(true);
  merge_watcher_.waitForFinished();
  check_watcher_.waitForFinished();
}

void MainWindow::build_menus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  QAction* open_sheet = file->addAction(tr("Open &Log Sheet..."), this, &MainWindow::choose_sheet);
  open_sheet->setShortcut(QKeySequence::Open);
  QAction* open_xml = file->addAction(tr("Open &XML Export..."), this, &MainWindow::choose_xml);
  open_xml->setShortcut(QKeySequence(tr("Ctrl+Shift+O")));
  QAction* save = file->addAction(tr("&Save Merged XML As..."), this, &MainWindow::choose_output);
  save->setShortcut(QKeySequence::SaveAs);
  file->addSeparator();
  QAction* merge_action = file->addAction(tr("&Merge"), this, &MainWindow::merge);
  merge_action->setShortcut(QKeySequence(tr("Ctrl+Return")));
  QAction* show = file->addAction(tr("Show in F&older"), this, &MainWindow::show_in_folder);
  show->setShortcut(QKeySequence(tr("Ctrl+Shift+F")));
  file->addSeparator();
  QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
  quit->setShortcut(QKeySequence::Quit);
}

QWidget* MainWindow::build_inputs() {
  auto* inputs = new QWidget;
  auto* form = new QFormLayout(inputs);
  form->setContentsMargins(0, 0, 0, 0);
  const auto add_row = [this, form](const QString& label, const QString& name,
                                    const QString& placeholder, const QString& button_text,
                                    void (MainWindow::*choose)()) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setPlaceholderText(placeholder);
    edit->setAcceptDrops(false);
    edit->setClearButtonEnabled(false);
    auto* button = new QPushButton(button_text);
    button->setObjectName(name + QStringLiteral("Button"));
    connect(button, &QPushButton::clicked, this, choose);
    auto* row = new QHBoxLayout;
    row->addWidget(edit, 1);
    row->addWidget(button);
    auto* label_widget = new QLabel(label);
    label_widget->setBuddy(edit);
    form->addRow(label_widget, row);
    return edit;
  };
  sheet_edit_ = add_row(tr("Log &sheet:"), QStringLiteral("sheet"),
                        tr("An .xls or .xlsx log sheet: choose one or drop it on the window"),
                        tr("Choose..."), &MainWindow::choose_sheet);
  xml_edit_ = add_row(tr("&XML export:"), QStringLiteral("xml"),
                      tr("A Final Cut Pro XML export: choose one or drop it on the window"),
                      tr("Choose..."), &MainWindow::choose_xml);
  output_edit_ = add_row(tr("&Write to:"), QStringLiteral("output"),
                         tr("The merged XML, beside the export unless you choose another"),
                         tr("Save As..."), &MainWindow::choose_output);
  connect(sheet_edit_, &QLineEdit::editingFinished, this,
          [this] { set_sheet(sheet_edit_->text()); });
  connect(xml_edit_, &QLineEdit::editingFinished, this, [this] { set_xml(xml_edit_->text()); });
  connect(output_edit_, &QLineEdit::editingFinished, this,
          [this] { set_output(output_edit_->text()); });
  return inputs;
}

QWidget* MainWindow::build_tables() {
  auto* splitter = new QSplitter(Qt::Vertical);

  auto* sheet_pane = new QWidget;
  auto* sheet_layout = new QVBoxLayout(sheet_pane);
  sheet_layout->setContentsMargins(0, 0, 0, 0);
  sheet_view_ = make_table(&sheet_model_, QStringLiteral("sheetTable"));
  auto* sheet_label = new QLabel(tr("The sheet as the merge &reads it"));
  sheet_label->setBuddy(sheet_view_);
  sheet_layout->addWidget(sheet_label);
  sheet_layout->addWidget(sheet_view_);

  auto* findings_pane = new QWidget;
  auto* findings_layout = new QVBoxLayout(findings_pane);
  findings_layout->setContentsMargins(0, 0, 0, 0);
  findings_view_ = make_table(&findings_model_, QStringLiteral("findingsTable"));
  findings_view_->horizontalHeader()->setSectionResizeMode(FindingsModel::kMessage,
                                                           QHeaderView::Stretch);
  findings_view_->setWordWrap(true);
  check_summary_ = new QLabel(tr("Choose a log sheet and an XML export to see what a merge does."));
  check_summary_->setObjectName(QStringLiteral("checkSummary"));
  check_summary_->setWordWrap(true);
  check_summary_->setBuddy(findings_view_);
  findings_layout->addWidget(check_summary_);
  findings_layout->addWidget(findings_view_);
  connect(findings_view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          &MainWindow::show_finding);

  splitter->addWidget(sheet_pane);
  splitter->addWidget(findings_pane);
  splitter->setStretchFactor(0, 3);
  splitter->setStretchFactor(1, 2);
  return splitter;
}

QWidget* MainWindow::build_merge_bar() {
  auto* bar = new QWidget;
  auto* layout = new QVBoxLayout(bar);
  layout->setContentsMargins(0, 0, 0, 0);
  message_ = new QLabel;
  message_->setObjectName(QStringLiteral("message"));
  message_->setWordWrap(true);
  message_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  message_->hide();
  layout->addWidget(message_);

  auto* row = new QHBoxLayout;
  progress_ = new QProgressBar;
  progress_->setObjectName(QStringLiteral("progress"));
  progress_->setRange(0, 1);
  progress_->setValue(0);
  progress_->setFormat(tr("%v of %m clips"));
  progress_->setTextVisible(false);
  show_button_ = new QPushButton(tr("Show in F&older"));
  show_button_->setObjectName(QStringLiteral("showInFolder"));
  show_button_->setEnabled(false);
  cancel_button_ = new QPushButton(tr("&Cancel"));
  cancel_button_->setObjectName(QStringLiteral("cancel"));
  cancel_button_->setShortcut(QKeySequence::Cancel);
  cancel_button_->setEnabled(false);
  merge_button_ = new QPushButton(tr("&Merge"));
  merge_button_->setObjectName(QStringLiteral("merge"));
  merge_button_->setDefault(true);
  merge_button_->setEnabled(false);
  connect(show_button_, &QPushButton::clicked, this, &MainWindow::show_in_folder);
  connect(cancel_button_, &QPushButton::clicked, this, &MainWindow::cancel_merge);
  connect(merge_button_, &QPushButton::clicked, this, &MainWindow::merge);
  row->addWidget(progress_, 1);
  row->addWidget(show_button_);
  row->addWidget(cancel_button_);
  row->addWidget(merge_button_);
  layout->addLayout(row);
  return bar;
}

void MainWindow::open_file(const QString& path) {
  if (is_log_sheet(path)) {
    set_sheet(path);
  } else {
    set_xml(path);
  }
}

void MainWindow::set_sheet(const QString& path) {
  if (path == sheet_edit_->text() && watcher_.files().contains(path)) return;
  sheet_edit_->setText(path);
  remember_folder(kSheetFolder, path);
  watch(path);
  start_check();
}

void MainWindow::set_xml(const QString& path) {
  if (path == xml_edit_->text() && watcher_.files().contains(path)) return;
  xml_edit_->setText(path);
  remember_folder(kXmlFolder, path);
  watch(path);
  if (!path.isEmpty() && (output_path().isEmpty() || output_path() == default_output_)) {
    const QFileInfo xml(path);
    default_output_ = xml.dir().filePath(xml.completeBaseName() + QStringLiteral("_logged.xml"));
    output_edit_->setText(default_output_);
  }
  start_check();
}

void MainWindow::set_output(const QString& path) {
  output_edit_->setText(path);
  if (path != default_output_) remember_folder(kOutputFolder, path);
  merge_button_->setEnabled(!sheet_edit_->text().isEmpty() && !xml_edit_->text().isEmpty() &&
                            !path.isEmpty() && !cancel_);
}

QString MainWindow::output_path() const { return output_edit_->text(); }

void MainWindow::choose_sheet() {
  const QString path = QFileDialog::getOpenFileName(
      this, tr("Choose the log sheet"), last_folder(kSheetFolder), tr("Log sheets (*.xls *.xlsx)"));
  if (!path.isEmpty()) set_sheet(path);
}

void MainWindow::choose_xml() {
  const QString path =
      QFileDialog::getOpenFileName(this, tr("Choose the XML export"), last_folder(kXmlFolder),
                                   tr("XML exports (*.xml);;All files (*)"));
  if (!path.isEmpty()) set_xml(path);
}

void MainWindow::choose_output() {
  QString start = output_path();
  if (start.isEmpty() || start == default_output_) {
    start = QDir(last_folder(kOutputFolder)).filePath(QFileInfo(start).fileName());
  }
  const QString path = QFileDialog::getSaveFileName(this, tr("Write the merged XML to"), start,
                                                    tr("XML files (*.xml)"));
  if (path.isEmpty()) return;
  confirmed_output_ = path;
  set_output(path);
}

void MainWindow::remember_folder(const char* key, const QString& path) {
  if (path.isEmpty()) return;
  QSettings().setValue(QLatin1String(key), QFileInfo(path).absolutePath());
}

QString MainWindow::last_folder(const char* key) const {
  return QSettings().value(QLatin1String(key)).toString();
}

void MainWindow::watch(const QString& path) {
  const QStringList inputs{sheet_edit_->text(), xml_edit_->text()};
  for (const QString& watched : watcher_.files()) {
    if (!inputs.contains(watched)) watcher_.removePath(watched);
  }
  if (!path.isEmpty() && QFileInfo::exists(path)) watcher_.addPath(path);
}

// Editors often save by writing a new file and renaming it over the old one: the watch then ends
// with the old file and is set up again on the new one.
void MainWindow::file_changed(const QString& path) {
  if (!watcher_.files().contains(path) && QFileInfo::exists(path)) watcher_.addPath(path);
  recheck_timer_.start();
}

void MainWindow::start_check() {
  set_output(output_path());
  const QString sheet = sheet_edit_->text();
  const QString xml = xml_edit_->text();
  if (sheet.isEmpty() || xml.isEmpty()) return;
  if (check_watcher_.isRunning()) {
    check_again_ = true;
    return;
  }
  check_again_ = false;
  check_summary_->setText(
      tr("Reading %1 and %2...").arg(QFileInfo(sheet).fileName(), QFileInfo(xml).fileName()));
  check_watcher_.setFuture(QtConcurrent::run(check_files, local_path(sheet), local_path(xml)));
}

void MainWindow::show_check(const std::shared_ptr<const CheckReport>& report) {
  sheet_model_.show_report(report);
  findings_model_.show_report(report);
  // The tables hold the new report now; the old one goes to a worker thread to be freed, which
  // takes a while on a large project.
  QThreadPool::globalInstance()->start(
      [previous = std::exchange(shown_report_, report)]() mutable { previous.reset(); });
  sheet_view_->resizeColumnsToContents();
  findings_view_->resizeColumnsToContents();
  findings_view_->horizontalHeader()->setSectionResizeMode(FindingsModel::kMessage,
                                                           QHeaderView::Stretch);
  if (report->merge.outcome == Outcome::not_a_log_sheet) {
    check_summary_->setText(text(not_a_log_sheet_message(local_path(sheet_edit_->text()))));
  } else if (report->error) {
    check_summary_->setText(tr("A merge would fail: %1").arg(text(*report->error)));
    if (const std::optional<int> row = failing_row(*report)) select_sheet_row(*row);
  } else {
    check_summary_->setText(
        tr("%1 - a merge would visit %2")
            .arg(counted(report->findings.size(), tr("%1 finding"), tr("%1 findings")),
                 merge_counts(report->merge)));
  }
  const std::string warning =
      recovered_warning(report->merge.recovered, local_path(xml_edit_->text()));
  if (!cancel_) {
    if (warning.empty()) {
      message_->hide();
    } else {
      show_message(text(warning), false);
    }
  }
  emit checked();
}

void MainWindow::show_finding(const QModelIndex& index) {
  if (!index.isValid()) return;
  const Finding& finding = findings_model_.finding(index.row());
  if (finding.row) select_sheet_row(*finding.row);
}

void MainWindow::select_sheet_row(int sheet_row) {
  const int row = sheet_model_.model_row(sheet_row);
  if (row < 0) return;
  sheet_view_->selectRow(row);
  sheet_view_->scrollTo(sheet_model_.index(row, 0));
}

bool MainWindow::confirm_replacing(const QString& output) {
  if (!QFileInfo::exists(output) || output == confirmed_output_) return true;
  const QString question =
      output == xml_edit_->text()
          ? tr("The merged document will replace the XML export %1 itself. Replace it?")
          : tr("%1 already exists. Replace it with the merged document?");
  return QMessageBox::question(this, tr("Replace the file?"), question.arg(output),
                               QMessageBox::Yes | QMessageBox::No,
                               QMessageBox::No) == QMessageBox::Yes;
}

void MainWindow::merge() {
  const QString output = output_path();
  if (cancel_ || sheet_edit_->text().isEmpty() || xml_edit_->text().isEmpty() || output.isEmpty() ||
      !confirm_replacing(output)) {
    return;
  }
  cancel_ = std::make_shared<std::atomic<bool>>(false);
  set_merging(true);
  message_->hide();
  progress_->setRange(0, 0);
  // The window outlives the merge: it waits for the worker when it goes.
  merge_watcher_.setFuture(QtConcurrent::run(
      run_merge, local_path(sheet_edit_->text()), local_path(xml_edit_->text()), local_path(output),
      cancel_, this, [this](qint64 value, qint64 maximum) { show_progress(value, maximum); }));
}

void MainWindow::cancel_merge() {
  if (!cancel_) return;
  cancel_->store(true);
  cancel_button_->setEnabled(false);
  progress_->setFormat(tr("Cancelling..."));
}

void MainWindow::show_progress(qint64 value, qint64 maximum) {
  if (!cancel_) return;
  progress_->setRange(0, static_cast<int>(std::max<qint64>(maximum, 1)));
  progress_->setValue(static_cast<int>(value));
}

void MainWindow::show_merge_result(const MergeResult& result) {
  cancel_.reset();
  set_merging(false);
  if (!result.report) {
    progress_->setValue(progress_->minimum());
    show_message(result.error, true);
    if (result.error_row) select_sheet_row(*result.error_row);
  } else if (result.report->outcome == Outcome::not_a_log_sheet) {
    show_message(text(not_a_log_sheet_message(local_path(sheet_edit_->text()))), true);
  } else if (result.report->outcome == Outcome::cancelled) {
    show_message(tr("Cancelled after %1; nothing was written.")
                     .arg(counted(result.report->clips_visited, tr("%1 clip"), tr("%1 clips"))),
                 false);
  } else {
    QString summary = tr("Merged %1. Wrote %2.").arg(merge_counts(*result.report), output_path());
    const std::string warning =
        recovered_warning(result.report->recovered, local_path(xml_edit_->text()));
    if (!warning.empty()) summary += QStringLiteral("\n") + text(warning);
    show_message(summary, false);
    show_button_->setEnabled(true);
  }
  emit merge_ended();
}

void MainWindow::set_merging(bool merging) {
  for (QWidget* input : {static_cast<QWidget*>(sheet_edit_), static_cast<QWidget*>(xml_edit_),
                         static_cast<QWidget*>(output_edit_)}) {
    input->setEnabled(!merging);
  }
  for (QPushButton* button : findChildren<QPushButton*>()) {
    if (button->objectName().endsWith(QStringLiteral("Button"))) button->setEnabled(!merging);
  }
  setAcceptDrops(!merging);
  progress_->setTextVisible(merging);
  progress_->setFormat(tr("%v of %m clips"));
  cancel_button_->setEnabled(merging);
  show_button_->setEnabled(false);
  set_output(output_path());
  if (merging) cancel_button_->setFocus();
}

void MainWindow::show_message(const QString& message, bool error) {
  message_->setText(message);
  message_->setStyleSheet(error ? QStringLiteral("color: #b01010;") : QString());
  message_->show();
}

void MainWindow::show_in_folder() {
  if (!show_button_->isEnabled()) return;
  QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(output_path()).absolutePath()));
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) open_file(url.toLocalFile());
  }
  event->acceptProposedAction();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (cancel_) cancel_->store(true);
  event->accept();
}

}  // namespace pellago::app
