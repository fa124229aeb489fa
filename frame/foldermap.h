// Counting distinct folders by the hash of their paths.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// Key: HashKey of a folder path; value: the first path stored under it. Two
/// paths of one hash count as one folder.
using FolderMap = std::unordered_map<DWORD, std::wstring>;

/// h = h * 33 + c over the text's UTF-16 code units, modulo 2^32.
DWORD HashKey(LPCWSTR text);

/// HashKey of the first `length` characters of a path.
struct FolderKey {
  std::size_t length;
  DWORD key;
};

/// The keys of a path and of all its ancestors, the longest first, in one pass
/// over the path.
std::vector<FolderKey> FolderKeysOf(std::wstring_view path);

/// Registers a path and all its ancestors; the number of entries added.
DWORD CheckFolderMap(FolderMap& map, const std::wstring& path);

/// Appends a path and its ancestors to a list, ignoring case. True when the
/// outermost ancestor that was looked at was not in the list yet.
bool CheckFolder(std::vector<std::wstring>& list, const std::wstring& path);

}  // namespace morvunp::frame
