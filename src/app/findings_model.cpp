#include "app/findings_model.hpp"

#include <QBrush>
#include <QColor>

namespace pellago::app {

namespace {

QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace

void FindingsModel::show_report(std::shared_ptr<const CheckReport> report) {
  beginResetModel();
  report_ = std::move(report);
  endResetModel();
}

int FindingsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || !report_ ? 0 : static_cast<int>(report_->findings.size());
}

int FindingsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QVariant FindingsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Finding& finding = this->finding(index.row());
  if (role == Qt::ForegroundRole && index.column() == kSeverity &&
      finding.severity == Severity::error) {
    return QBrush(QColor(0xb0, 0x10, 0x10));
  }
  if (role == Qt::ToolTipRole && index.column() >= kMessage) {
    return text(index.column() == kMessage ? finding.message : finding.suggestion);
  }
  if (role != Qt::DisplayRole) return {};
  switch (index.column()) {
    case kSeverity:
      return text(severity_name(finding.severity));
    case kRow:
      return finding.row ? QVariant(*finding.row) : QVariant();
    case kColumn:
      return finding.column ? QStringLiteral("%1 \"%2\"")
                                  .arg(text(finding.column->letter), text(finding.column->header))
                            : QVariant();
    case kClip:
      return finding.clip ? text(finding.clip->name) : QVariant();
    case kMessage:
      return text(finding.message);
    case kSuggestion:
      return text(finding.suggestion);
    default:
      return {};
  }
}

QVariant FindingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case kSeverity:
      return tr("Severity");
    case kRow:
      return tr("Row");
    case kColumn:
      return tr("Column");
    case kClip:
      return tr("Clip");
    case kMessage:
      return tr("Finding");
    case kSuggestion:
      return tr("Suggestion");
    default:
      return {};
  }
}

}  // namespace pellago::app
