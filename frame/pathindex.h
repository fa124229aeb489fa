// Looking items up by their path, ignoring case.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace morvunp::frame {

bool SamePath(const std::wstring& left, const std::wstring& right);
/// Equal for paths that differ in case only.
std::size_t FoldedHash(const std::wstring& path);

/// Finds the first item of a path in a list, whose items must not change
/// between Clear and the last Find.
class PathIndex {
 public:
  void Clear() {
    m_entries.clear();
    m_bLookedUp = false;
  }

  /// The item's place in a list of `count` items; `count` when there is none.
  /// `getPath(place, text)` fills in the path of an item.
  template <class GetPath>
  std::size_t Find(std::size_t count, GetPath getPath, const std::wstring& path) {
    // One look-up alone is cheaper by walking.
    if (!std::exchange(m_bLookedUp, true)) return FindByWalking(count, getPath, path);
    if (m_entries.empty()) Build(count, getPath);
    const std::size_t hash = FoldedHash(path);
    std::wstring text;
    auto entry =
        std::lower_bound(m_entries.begin(), m_entries.end(), std::pair(hash, std::size_t{0}));
    for (; entry != m_entries.end() && entry->first == hash; ++entry) {
      getPath(entry->second, text);
      if (SamePath(text, path)) return entry->second;
    }
    return count;
  }

 private:
  template <class GetPath>
  static std::size_t FindByWalking(std::size_t count, GetPath getPath, const std::wstring& path) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) {
      getPath(i, text);
      if (SamePath(text, path)) return i;
    }
    return count;
  }

  template <class GetPath>
  void Build(std::size_t count, GetPath getPath) {
    std::wstring text;
    m_entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      getPath(i, text);
      m_entries.emplace_back(FoldedHash(text), i);
    }
    std::sort(m_entries.begin(), m_entries.end());
  }

  /// Hash of the case-folded path and place, sorted.
  std::vector<std::pair<std::size_t, std::size_t>> m_entries;
  bool m_bLookedUp = false;
};

}  // namespace morvunp::frame
