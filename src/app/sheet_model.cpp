#include "app/sheet_model.hpp"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QStringList>

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

void SheetModel::show_report(const CheckReport& report) {
  beginResetModel();
  sheet_ = report.sheet.value_or(SheetAsRead{});
  fields_.clear();
  if (!sheet_.rows.empty()) fields_ = *sheet_.rows.front().fields.headers;
  findings_.clear();
  for (const Finding& finding : report.findings) {
    if (finding.row) findings_.emplace(*finding.row, finding);
  }
  endResetModel();
}

int SheetModel::model_row(int sheet_row) const {
  for (std::size_t i = 0; i < sheet_.rows.size(); ++i) {
    if (sheet_.rows[i].row == sheet_row) return static_cast<int>(i);
  }
  return -1;
}

int SheetModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(sheet_.rows.size());
}

int SheetModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kFixedColumns + static_cast<int>(fields_.size()) + 1;
}

QVariant SheetModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const SheetRow& row = sheet_.rows.at(static_cast<std::size_t>(index.row()));
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
  auto [first, last] = findings_.equal_range(sheet_row);
  if (first == last) return {};
  Severity gravest = Severity::note;
  for (auto it = first; it != last; ++it) gravest = std::max(gravest, it->second.severity);
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
  auto [first, last] = findings_.equal_range(sheet_row);
  QStringList lines;
  for (auto it = first; it != last; ++it) lines << text(it->second.message);
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
