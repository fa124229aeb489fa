// What did not come out of an archive, and why, for a list with columns.
#pragma once

#include <QAbstractTableModel>
#include <string>
#include <vector>

#include "hosts/common/reason.h"

namespace desktop {

class MissingModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  void Add(std::wstring path, host::Reason reason);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Missing {
    std::wstring path;
    host::Reason reason;
  };
  std::vector<Missing> rows_;
};

}  // namespace desktop
