#include "hosts/desktop/fileicons.h"

#include <QApplication>
#include <QMimeDatabase>
#include <QStyle>

namespace desktop {

FileIcons::FileIcons()
    : folder_(QIcon::fromTheme("folder", QApplication::style()->standardIcon(QStyle::SP_DirIcon))),
      file_(QIcon::fromTheme("text-x-generic",
                             QApplication::style()->standardIcon(QStyle::SP_FileIcon))) {}

const QIcon& FileIcons::OfFile(const QString& name) {
  const qsizetype dot = name.lastIndexOf('.');
  if (dot < 0) return file_;
  const QString extension = name.mid(dot + 1).toLower();
  // Strangers choose the extensions, so there may be one for each file.
  constexpr qsizetype kMostExtensions = 1000;
  if (byExtension_.size() > kMostExtensions) return file_;
  const auto known = byExtension_.constFind(extension);
  if (known != byExtension_.constEnd()) return *known;
  const QMimeType type =
      QMimeDatabase().mimeTypeForFile("a." + extension, QMimeDatabase::MatchExtension);
  const QIcon generic = QIcon::fromTheme(type.genericIconName(), file_);
  return *byExtension_.insert(extension, QIcon::fromTheme(type.iconName(), generic));
}

}  // namespace desktop
