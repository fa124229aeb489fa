#include "hosts/desktop/sizecolumn.h"

namespace desktop {

void SizeColumn::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  // An empty picture after the text: every style leaves its room free, on the
  // side that the reading direction asks for.
  option->features |= QStyleOptionViewItem::HasDecoration;
  option->decorationPosition = QStyleOptionViewItem::Right;
  option->decorationSize = QSize(option->fontMetrics.averageCharWidth(), 1);
}

}  // namespace desktop
