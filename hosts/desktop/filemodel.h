// What one folder of an archive holds, for a list with columns.
#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "hosts/desktop/archivetree.h"
#include "hosts/desktop/fileicons.h"

namespace desktop {

/// Keeps one number for each row.
class FileModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kName, kSize, kModified, kColumns };

  FileModel(FileIcons& icons, QObject* parent) : QAbstractTableModel(parent), icons_(icons) {}

  /// Null for nothing; else the tree must outlive its being shown.
  void Show(const ArchiveTree* tree, ArchiveTree::Index folder);
  ArchiveTree::Index ItemAt(const QModelIndex& index) const {
    return rows_[static_cast<std::size_t>(index.row())];
  }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void sort(int column, Qt::SortOrder order) override;

 private:
  QString TextOf(ArchiveTree::Index item, int column) const;
  bool IsLess(ArchiveTree::Index left, ArchiveTree::Index right) const;
  void SortRows();

  FileIcons& icons_;
  const ArchiveTree* tree_ = nullptr;
  std::vector<ArchiveTree::Index> rows_;
  int sortColumn_ = kName;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

}  // namespace desktop
