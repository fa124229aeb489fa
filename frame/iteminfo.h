// What the information records of all formats share.
#pragma once

namespace frame {

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

}  // namespace frame
