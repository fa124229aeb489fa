// The files and folders that an unpack has written, for a list.
#pragma once

#include <QAbstractListModel>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

/// Takes paths as fast as the library reports them; views hear of them when
/// Publish is called.
class WrittenModel : public QAbstractListModel {
  Q_OBJECT

 public:
  using QAbstractListModel::QAbstractListModel;

  /// Paths below `target` are shown without it.
  void Start(std::wstring target);
  void Add(std::wstring_view path);
  void Publish();

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  std::wstring target_;
  /// All paths, one behind the other, and where each ends.
  std::wstring text_;
  std::vector<std::size_t> ends_;
  std::size_t published_ = 0;
};

}  // namespace desktop
