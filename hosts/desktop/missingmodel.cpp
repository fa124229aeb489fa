#include "hosts/desktop/missingmodel.h"

#include "hosts/desktop/shown.h"

namespace desktop {

void MissingModel::Add(std::wstring path, host::Reason reason) {
  const auto row = static_cast<int>(rows_.size());
  beginInsertRows({}, row, row);
  rows_.push_back({std::move(path), std::move(reason)});
  endInsertRows();
}

int MissingModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int MissingModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 2; }

QVariant MissingModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const Missing& missing = rows_[static_cast<std::size_t>(index.row())];
  const QString text = index.column() == 0 ? ShownPath(missing.path) : ShownReason(missing.reason);
  return role == Qt::DisplayRole ? text : AsToolTip(text);
}

QVariant MissingModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return section == 0 ? tr("Item") : tr("Why");
}

}  // namespace desktop
