// How the column with the sizes is shown.
#pragma once

#include <QStyledItemDelegate>

namespace desktop {

/// Keeps numbers, which stand at the column's end, away from the next column.
class SizeColumn : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace desktop
