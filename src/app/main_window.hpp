#pragma once

#include <QFileSystemWatcher>
#include <QFutureWatcher>
#include <QMainWindow>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>

#include "app/findings_model.hpp"
#include "app/sheet_model.hpp"
#include "check/findings.hpp"
#include "merge/add_log_notes.hpp"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableView;

namespace pellago::app {

// How a merge run on the worker thread ended: its report, or the message of its failure and the
// sheet row it names, if any.
struct MergeResult {
  std::optional<MergeReport> report;
  QString error;
  std::optional<int> error_row;
};

// The one window: the log sheet, the XML export and the output file; the sheet as the merge reads
// it and the findings of a check, redone whenever either input changes; the merge, run on a worker
// thread with a progress bar and Cancel.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  // Takes a dropped or named file as the log sheet or as the XML export, as the file tells.
  void open_file(const QString& path);
  void set_sheet(const QString& path);
  void set_xml(const QString& path);
  void set_output(const QString& path);

  QString output_path() const;

 public slots:
  void merge();
  void cancel_merge();

 signals:
  // The table and findings show the inputs as they are now.
  void checked();
  // A merge ended: merged, cancelled or failed.
  void merge_ended();

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void build_menus();
  QWidget* build_inputs();
  QWidget* build_tables();
  QWidget* build_merge_bar();
  void choose_sheet();
  void choose_xml();
  void choose_output();
  void remember_folder(const char* key, const QString& path);
  QString last_folder(const char* key) const;
  void watch(const QString& path);
  void file_changed(const QString& path);
  void start_check();
  void show_check(const std::shared_ptr<const CheckReport>& report);
  void show_finding(const QModelIndex& index);
  void select_sheet_row(int sheet_row);
  bool confirm_replacing(const QString& output);
  void show_progress(qint64 value, qint64 maximum);
  void show_merge_result(const MergeResult& result);
  void set_merging(bool merging);
  void show_message(const QString& text, bool error);
  void show_in_folder();

  QLineEdit* sheet_edit_ = nullptr;
  QLineEdit* xml_edit_ = nullptr;
  QLineEdit* output_edit_ = nullptr;
  QTableView* sheet_view_ = nullptr;
  QTableView* findings_view_ = nullptr;
  QLabel* check_summary_ = nullptr;
  QLabel* message_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QPushButton* merge_button_ = nullptr;
  QPushButton* cancel_button_ = nullptr;
  QPushButton* show_button_ = nullptr;

  SheetModel sheet_model_;
  FindingsModel findings_model_;
  QFileSystemWatcher watcher_;
  QTimer recheck_timer_;
  QFutureWatcher<std::shared_ptr<const CheckReport>> check_watcher_;
  std::shared_ptr<const CheckReport> shown_report_;  // what the tables show
  bool check_again_ = false;                         // an input changed while a check was running
  QFutureWatcher<MergeResult> merge_watcher_;
  std::shared_ptr<std::atomic<bool>> cancel_;
  QString default_output_;    // NAME_logged.xml beside the export, while the user chose no other
  QString confirmed_output_;  // the output the Save dialog already asked about replacing
};

}  // namespace pellago::app
