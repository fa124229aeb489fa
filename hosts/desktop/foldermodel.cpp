#include "hosts/desktop/foldermodel.h"

#include "hosts/desktop/shown.h"

namespace desktop {

void FolderModel::Show(const ArchiveTree* tree, const QString& rootName) {
  beginResetModel();
  tree_ = tree;
  rootName_ = rootName;
  endResetModel();
}

ArchiveTree::Index FolderModel::FolderAt(const QModelIndex& index) {
  return index.isValid() ? static_cast<ArchiveTree::Index>(index.internalId()) : ArchiveTree::kRoot;
}

QModelIndex FolderModel::IndexOf(ArchiveTree::Index folder) const {
  return createIndex(static_cast<int>(tree_->At(folder).row), 0, quintptr{folder});
}

QModelIndex FolderModel::index(int row, int column, const QModelIndex& parent) const {
  if (tree_ == nullptr || column != 0 || row < 0 || row >= rowCount(parent)) return {};
  if (!parent.isValid()) return IndexOf(ArchiveTree::kRoot);
  return createIndex(row, 0, quintptr{tree_->Folders(FolderAt(parent))[std::size_t(row)]});
}

QModelIndex FolderModel::parent(const QModelIndex& child) const {
  const ArchiveTree::Index folder = FolderAt(child);
  return folder != ArchiveTree::kRoot ? IndexOf(tree_->At(folder).parent) : QModelIndex();
}

int FolderModel::rowCount(const QModelIndex& parent) const {
  if (tree_ == nullptr) return 0;
  return parent.isValid() ? static_cast<int>(tree_->Folders(FolderAt(parent)).size()) : 1;
}

QVariant FolderModel::data(const QModelIndex& index, int role) const {
  const ArchiveTree::Index folder = FolderAt(index);
  if (role == Qt::DecorationRole) return icons_.Folder();
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const QString name = folder == ArchiveTree::kRoot ? rootName_ : ShownName(tree_->NameOf(folder));
  return role == Qt::DisplayRole ? name : AsToolTip(name);
}

}  // namespace desktop
