#include "frame/foldermap.h"

#include <algorithm>

#include "frame/itempath.h"

namespace frame {
namespace {

constexpr DWORD kMultiplier = 33;

DWORD Add(FolderMap& map, const std::wstring& path) {
  return map.try_emplace(HashKey(path.c_str()), path).second ? 1 : 0;
}

}  // namespace

DWORD HashKey(LPCWSTR text) {
  DWORD hash = 0;
  for (; *text != 0; ++text) {
    auto c = static_cast<DWORD>(*text);
    if (c > 0xFFFF) {
      // Outside the basic plane: the two surrogates, one after the other.
      c -= 0x10000;
      hash = hash * kMultiplier + (0xD800 | c >> 10);
      c = 0xDC00 | (c & 0x3FF);
    }
    hash = hash * kMultiplier + c;
  }
  return hash;
}

DWORD CheckFolderMap(FolderMap& map, const std::wstring& path) {
  DWORD added = Add(map, path);
  for (std::wstring ancestor = path; HasParent(ancestor);) {
    ancestor.resize(ParentOf(ancestor).size());
    added += Add(map, ancestor);
  }
  return added;
}

bool CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) {
  const bool known = std::any_of(list.begin(), list.end(), [&](const std::wstring& entry) {
    return _wcsicmp(entry.c_str(), path.c_str()) == 0;
  });
  if (!known) list.push_back(path);
  return HasParent(path) ? CheckFolder(list, std::wstring(ParentOf(path))) : !known;
}

}  // namespace frame
