#include "hosts/desktop/writtenmodel.h"

#include "hosts/desktop/shown.h"

namespace desktop {

void WrittenModel::Start(std::wstring target) { target_ = std::move(target) + L'\\'; }

void WrittenModel::Add(std::wstring_view path) {
  if (path.starts_with(target_)) path.remove_prefix(target_.size());
  text_ += path;
  ends_.push_back(text_.size());
}

void WrittenModel::Publish() {
  if (published_ == ends_.size()) return;
  beginInsertRows({}, static_cast<int>(published_), static_cast<int>(ends_.size()) - 1);
  published_ = ends_.size();
  endInsertRows();
}

int WrittenModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(published_);
}

QVariant WrittenModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const auto row = static_cast<std::size_t>(index.row());
  const std::size_t start = row > 0 ? ends_[row - 1] : 0;
  const QString path = ShownPath(std::wstring_view(text_).substr(start, ends_[row] - start));
  return role == Qt::DisplayRole ? path : AsToolTip(path);
}

}  // namespace desktop
