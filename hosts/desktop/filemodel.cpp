#include "hosts/desktop/filemodel.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>

#include "hosts/desktop/shown.h"

namespace desktop {

void FileModel::Show(const ArchiveTree* tree, ArchiveTree::Index folder) {
  beginResetModel();
  tree_ = tree;
  rows_.clear();
  if (tree != nullptr) {
    const auto children = tree->Children(folder);
    rows_.assign(children.begin(), children.end());
    SortRows();
  }
  endResetModel();
}

int FileModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int FileModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QString FileModel::TextOf(ArchiveTree::Index item, int column) const {
  const ArchiveTree::Entry& entry = tree_->At(item);
  switch (column) {
    case kName:
      return ShownName(tree_->NameOf(item));
    case kSize:
      return entry.isFolder ? QString() : QLocale().toString(static_cast<qulonglong>(entry.size));
    case kModified:
      if (entry.modified == ArchiveTree::kNoTime) return {};
      return QLocale().toString(QDateTime::fromSecsSinceEpoch(entry.modified),
                                QLocale::ShortFormat);
    default:
      return {};
  }
}

QVariant FileModel::data(const QModelIndex& index, int role) const {
  const ArchiveTree::Index item = ItemAt(index);
  const ArchiveTree::Entry& entry = tree_->At(item);
  switch (role) {
    case Qt::DisplayRole:
      return TextOf(item, index.column());
    case Qt::ToolTipRole:
      return AsToolTip(TextOf(item, kName));
    case Qt::DecorationRole:
      if (index.column() != kName) return {};
      return entry.isFolder ? icons_.Folder() : icons_.OfFile(TextOf(item, kName));
    case Qt::TextAlignmentRole:
      if (index.column() != kSize) return {};
      return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    default:
      return {};
  }
}

QVariant FileModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole && section == kSize) {
    return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case kName:
      return tr("Name");
    case kSize:
      return tr("Size");
    default:
      return tr("Modified");
  }
}

bool FileModel::IsLess(ArchiveTree::Index left, ArchiveTree::Index right) const {
  const ArchiveTree::Entry& a = tree_->At(left);
  const ArchiveTree::Entry& b = tree_->At(right);
  const bool isReversed = sortOrder_ == Qt::DescendingOrder;
  // Folders stay above files.
  if (a.isFolder != b.isFolder) return a.isFolder;
  if (sortColumn_ == kSize && a.size != b.size) return (a.size < b.size) != isReversed;
  if (sortColumn_ == kModified && a.modified != b.modified) {
    return (a.modified < b.modified) != isReversed;
  }
  const bool isNameReversed = isReversed && sortColumn_ == kName;
  return isNameReversed ? IsNameLess(tree_->NameOf(right), tree_->NameOf(left))
                        : IsNameLess(tree_->NameOf(left), tree_->NameOf(right));
}

void FileModel::SortRows() {
  const auto isLess = [this](ArchiveTree::Index left, ArchiveTree::Index right) {
    return IsLess(left, right);
  };
  // Archives are often in order already.
  if (!std::ranges::is_sorted(rows_, isLess)) std::ranges::stable_sort(rows_, isLess);
}

void FileModel::sort(int column, Qt::SortOrder order) {
  if (column == sortColumn_ && order == sortOrder_) return;
  sortColumn_ = column;
  sortOrder_ = order;
  if (tree_ == nullptr) return;
  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const std::vector<ArchiveTree::Index> before = rows_;
  SortRows();
  std::vector<std::pair<ArchiveTree::Index, int>> rowOf;
  rowOf.reserve(rows_.size());
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    rowOf.emplace_back(rows_[row], static_cast<int>(row));
  }
  std::ranges::sort(rowOf);
  for (const QModelIndex& old : persistentIndexList()) {
    const auto item = before[static_cast<std::size_t>(old.row())];
    const auto found = std::ranges::lower_bound(rowOf, std::pair(item, 0));
    changePersistentIndex(old, index(found->second, old.column()));
  }
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

}  // namespace desktop
