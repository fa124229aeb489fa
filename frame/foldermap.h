// Counting distinct folders by the hash of their paths.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/platform.h"

namespace frame {

/// Key: HashKey of a folder path; value: the first path stored under it. Two
/// paths of one hash count as one folder.
using FolderMap = std::unordered_map<DWORD, std::wstring>;

/// h = h * 33 + c over the text's UTF-16 code units, modulo 2^32.
DWORD HashKey(LPCWSTR text);

/// Registers a path and all its ancestors; the number of entries added.
DWORD CheckFolderMap(FolderMap& map, const std::wstring& path);

/// Appends a path and its ancestors to a list, ignoring case. True when the
/// outermost ancestor that was looked at was not in the list yet.
bool CheckFolder(std::vector<std::wstring>& list, const std::wstring& path);

}  // namespace frame
