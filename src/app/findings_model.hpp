#pragma once

#include <QAbstractTableModel>
#include <memory>

#include "check/findings.hpp"

namespace pellago::app {

// The findings of a check, one per line: severity, sheet row, column, clip, what looks wrong and
// what to write instead.
class FindingsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kSeverity, kRow, kColumn, kClip, kMessage, kSuggestion, kColumns };

  using QAbstractTableModel::QAbstractTableModel;

  void show_report(std::shared_ptr<const CheckReport> report);
  const Finding& finding(int row) const {
    return report_->findings.at(static_cast<std::size_t>(row));
  }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::shared_ptr<const CheckReport> report_;
};

}  // namespace pellago::app
