// The folders of an archive for a tree view.
#pragma once

#include <QAbstractItemModel>

#include "hosts/desktop/archivetree.h"
#include "hosts/desktop/fileicons.h"

namespace desktop {

/// Shows the tree itself: nothing is made for a folder before it is looked at.
class FolderModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  FolderModel(FileIcons& icons, QObject* parent) : QAbstractItemModel(parent), icons_(icons) {}

  /// `rootName` is shown for the archive itself. Null for none; else the tree
  /// must outlive its being shown.
  void Show(const ArchiveTree* tree, const QString& rootName);

  static ArchiveTree::Index FolderAt(const QModelIndex& index);
  QModelIndex IndexOf(ArchiveTree::Index folder) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex&) const override { return 1; }
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  FileIcons& icons_;
  const ArchiveTree* tree_ = nullptr;
  QString rootName_;
};

}  // namespace desktop
