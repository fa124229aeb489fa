// Looking items up by their path, ignoring case.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace frame {

bool SamePath(const std::wstring& left, const std::wstring& right);
/// Equal for paths that differ in case only.
std::size_t FoldedHash(const std::wstring& path);

/// Finds the first item of a path in a list whose items have an `m_strPath`.
/// The list must not change between Clear and the last Find.
class PathIndex {
 public:
  void Clear() {
    m_entries.clear();
    m_bLookedUp = false;
  }

  /// The item's place in the list; the list's size when there is none.
  template <class List>
  std::size_t Find(const List& list, const std::wstring& path) {
    // One look-up alone is cheaper by walking.
    if (!std::exchange(m_bLookedUp, true)) return FindByWalking(list, path);
    if (m_entries.empty()) Build(list);
    const std::size_t hash = FoldedHash(path);
    auto entry =
        std::lower_bound(m_entries.begin(), m_entries.end(), std::pair(hash, std::size_t{0}));
    for (; entry != m_entries.end() && entry->first == hash; ++entry) {
      if (SamePath(list[entry->second].m_strPath, path)) return entry->second;
    }
    return list.size();
  }

 private:
  template <class List>
  static std::size_t FindByWalking(const List& list, const std::wstring& path) {
    std::size_t i = 0;
    while (i < list.size() && !SamePath(list[i].m_strPath, path)) ++i;
    return i;
  }

  template <class List>
  void Build(const List& list) {
    m_entries.reserve(list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
      m_entries.emplace_back(FoldedHash(list[i].m_strPath), i);
    }
    std::sort(m_entries.begin(), m_entries.end());
  }

  /// Hash of the case-folded path and place, sorted.
  std::vector<std::pair<std::size_t, std::size_t>> m_entries;
  bool m_bLookedUp = false;
};

}  // namespace frame
