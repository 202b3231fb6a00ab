#include "app/sheet_model.hpp"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QStringList>
#include <algorithm>

namespace pellago::app {

namespace {

enum FixedColumn { kRowColumn, kClipColumn, kFixedColumns };

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

QString marker_text(const MarkerEntry& marker) {
  QStringList parts{text(marker.timecode)};
  if (marker.name && !marker.name->empty()) parts << text(*marker.name);
  if (marker.comment && !marker.comment->empty()) parts << text(*marker.comment);
  if (marker.color && !marker.color->empty()) parts << text(*marker.color);
  return parts.join(QStringLiteral(" · "));
}

}  // namespace

void SheetModel::show_report(std::shared_ptr<const CheckReport> report) {
  beginResetModel();
  report_ = std::move(report);
  fields_.clear();
  if (!rows().empty()) fields_ = *rows().front().fields.headers;
  findings_by_row_.clear();
  for (const Finding& finding : report_->findings) {
    if (finding.row) findings_by_row_.emplace_back(*finding.row, &finding);
  }
  std::ranges::stable_sort(findings_by_row_, {}, &std::pair<int, const Finding*>::first);
  endResetModel();
}

const std::vector<SheetRow>& SheetModel::rows() const {
  static const std::vector<SheetRow> none;
  return report_ && report_->sheet ? report_->sheet->rows : none;
}

std::span<const std::pair<int, const Finding*>> SheetModel::findings_of(int sheet_row) const {
  const auto [first, last] = std::ranges::equal_range(findings_by_row_, sheet_row, {},
                                                      &std::pair<int, const Finding*>::first);
  return {first, last};
}

int SheetModel::model_row(int sheet_row) const {
  for (std::size_t i = 0; i < rows().size(); ++i) {
    if (rows()[i].row == sheet_row) return static_cast<int>(i);
  }
  return -1;
}

int SheetModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows().size());
}

int SheetModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kFixedColumns + static_cast<int>(fields_.size()) + 1;
}

QVariant SheetModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const SheetRow& row = rows().at(static_cast<std::size_t>(index.row()));
  switch (role) {
    case Qt::DisplayRole:
      return display(row, index.column());
    case Qt::BackgroundRole:
      return tint(row.row);
    case Qt::ToolTipRole:
      return tool_tip(row.row);
    case Qt::FontRole:
      if (index.column() == kClipColumn && row.clips.empty()) {
        QFont font;
        font.setItalic(true);
        return font;
      }
      return {};
    default:
      return {};
  }
}

QVariant SheetModel::display(const SheetRow& row, int column) const {
  if (column == kRowColumn) return row.row;
  if (column == kClipColumn) {
    if (row.clips.empty()) return tr("no clip");
    QStringList names;
    for (const ClipRef& clip : row.clips) names << text(clip.name);
    return names.join(QStringLiteral(", "));
  }
  const auto field = static_cast<std::size_t>(column - kFixedColumns);
  if (field < fields_.size()) return text(row.fields.value(field));
  QStringList markers;
  for (const MarkerEntry& marker : row.fields.markers) markers << marker_text(marker);
  return markers.join(QStringLiteral("; "));
}

QVariant SheetModel::tint(int sheet_row) const {
  const auto findings = findings_of(sheet_row);
  if (findings.empty()) return {};
  Severity gravest = Severity::note;
  for (const auto& [row, finding] : findings) gravest = std::max(gravest, finding->severity);
  switch (gravest) {
    case Severity::error:
      return QBrush(QColor(0xf8, 0xd0, 0xd0));
    case Severity::warning:
      return QBrush(QColor(0xfc, 0xef, 0xc0));
    case Severity::note:
      return QBrush(QColor(0xdd, 0xea, 0xf8));
  }
  return {};
}

QVariant SheetModel::tool_tip(int sheet_row) const {
  QStringList lines;
  for (const auto& [row, finding] : findings_of(sheet_row)) lines << text(finding->message);
  return lines.isEmpty() ? QVariant() : QVariant(lines.join('\n'));
}

QVariant SheetModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  if (section == kRowColumn) return tr("Row");
  if (section == kClipColumn) return tr("Clip");
  const auto field = static_cast<std::size_t>(section - kFixedColumns);
  if (field < fields_.size()) return text(fields_[field]);
  return tr("Markers");
}

}  // namespace pellago::app
