// What the information records of all formats share.
#pragma once

#include <string_view>

#include "frame/itempath.h"

namespace morvunp::frame {

/// Empties it. The texts keep their memory: a walk fills the same record for
/// every item.
template <class Info>
void EmptyCommon(Info& info) {
  info.strExt.clear();
  info.strTitle.clear();
  info.strName.clear();
  info.strPath.clear();
  info.bInFolder = 0;
  info.bFolder = 0;
}

/// Fills the names as the formats do that tell a folder in a folder from one
/// that is in none: a folder has its path and one of the two bytes, a file no
/// byte. The extension is that of the whole path. `info.strPath` is set before.
template <class Info>
void FillNames(Info& info, bool isFolder) {
  const std::wstring_view path = info.strPath;
  if (isFolder) {
    info.bInFolder = HasParent(path) ? 1 : 0;
    info.bFolder = info.bInFolder != 0 ? 0 : 1;
    return;
  }
  info.strExt = ExtensionOf(path);
  info.strName = NameOf(path);
  info.strTitle = TitleOf(info.strName);
}

/// True for a record that FillNames filled as a folder's.
template <class Info>
bool IsFolderItem(const Info& info) {
  return info.bFolder != 0 || info.bInFolder != 0;
}

}  // namespace morvunp::frame
