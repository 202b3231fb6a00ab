#pragma once

#include <QAbstractTableModel>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "check/findings.hpp"

namespace pellago::app {

// The sheet as the merge reads it: one line per data row with its sheet row number, the clips it
// names, its fields under the sheet's headers and its markers. Rows with findings are tinted by
// their gravest finding and list the findings in their tool tip.
class SheetModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  // Shows the report's sheet and findings; an empty table when the report holds no sheet.
  void show_report(std::shared_ptr<const CheckReport> report);
  // The model row of a sheet row, or -1 when the table has no such row.
  int model_row(int sheet_row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QVariant display(const SheetRow& row, int column) const;
  QVariant tint(int sheet_row) const;
  QVariant tool_tip(int sheet_row) const;

  const std::vector<SheetRow>& rows() const;
  // The report's findings about one sheet row.
  std::span<const std::pair<int, const Finding*>> findings_of(int sheet_row) const;

  std::shared_ptr<const CheckReport> report_;
  std::vector<std::string> fields_;  // the headers of the rows' fields, in column order
  std::vector<std::pair<int, const Finding*>> findings_by_row_;  // sorted by sheet row
};

}  // namespace pellago::app
