// Icons of files by their names, from the desktop's own set.
#pragma once

#include <QHash>
#include <QIcon>
#include <QString>

namespace desktop {

/// Looks each file type up once.
class FileIcons {
 public:
  FileIcons();

  const QIcon& Folder() const { return folder_; }
  const QIcon& OfFile(const QString& name);

 private:
  QIcon folder_;
  QIcon file_;
  QHash<QString, QIcon> byExtension_;
};

}  // namespace desktop
