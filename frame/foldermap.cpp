#include "frame/foldermap.h"

#include <algorithm>

#include "frame/itempath.h"
#include "platform/unicode.h"

namespace morvunp::frame {
namespace {

constexpr DWORD kMultiplier = 33;

DWORD AdvanceByUnit(DWORD hash, wchar_t unit) {
  return hash * kMultiplier + static_cast<DWORD>(unit);
}

/// The hash after one more character, as UTF-16 code units.
DWORD Advance(DWORD hash, wchar_t c) {
  if (c < platform::kFirstOfTwoUnits) return AdvanceByUnit(hash, c);
  hash = AdvanceByUnit(hash, platform::HighSurrogateOf(c));
  return AdvanceByUnit(hash, platform::LowSurrogateOf(c));
}

}  // namespace

DWORD HashKey(LPCWSTR text) {
  DWORD hash = 0;
  for (; *text != 0; ++text) hash = Advance(hash, *text);
  return hash;
}

std::vector<FolderKey> FolderKeysOf(std::wstring_view path) {
  std::vector<FolderKey> keys;
  DWORD hash = 0;
  for (std::size_t i = 0; i < path.size() && path[i] != 0; ++i) {
    if (path[i] == kSeparator) keys.push_back({i, hash});
    hash = Advance(hash, path[i]);
  }
  keys.push_back({path.size(), hash});
  std::reverse(keys.begin(), keys.end());
  return keys;
}

DWORD CheckFolderMap(FolderMap& map, const std::wstring& path) {
  DWORD added = 0;
  for (const auto& [length, key] : FolderKeysOf(path)) {
    if (map.contains(key)) continue;
    map.emplace(key, path.substr(0, length));
    ++added;
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

}  // namespace morvunp::frame
