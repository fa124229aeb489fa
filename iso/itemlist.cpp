#include "iso/itemlist.h"

#include <algorithm>
#include <cwctype>

#include "frame/itempath.h"
#include "frame/pathgate.h"

namespace iso {
namespace {

bool SamePath(const std::wstring& left, const std::wstring& right) {
  return left.size() == right.size() && _wcsicmp(left.c_str(), right.c_str()) == 0;
}

/// Equal for paths that differ in case only.
std::size_t FoldedHash(const std::wstring& path) {
  std::size_t hash = 0;
  for (const wchar_t c : path) {
    hash = hash * 1099511628211U + std::towlower(static_cast<std::wint_t>(c));
  }
  return hash;
}

}  // namespace

CIsoItemInfo MakeItem(std::wstring_view name, const ItemFolder& parent) {
  CIsoItemInfo item;
  const bool inRoot = parent.path.empty();
  item.m_strPath = inRoot ? std::wstring(name) : frame::Join(parent.path, name);
  item.m_nNameLength = static_cast<DWORD>(name.size());
  item.m_bSafe = parent.safe && frame::IsSafeName(name, inRoot) ? 1 : 0;
  return item;
}

void ItemList::RemoveAllItems() {
  m_arrItems.clear();
  m_index.clear();
  m_bLookedUp = false;
  FindFile();
}

bool ItemList::FindFile() {
  m_nPosition = 0;
  m_pCurrent = nullptr;
  return !m_arrItems.empty();
}

bool ItemList::FindNextFile() {
  if (m_arrItems.empty()) return false;
  if (m_nPosition >= m_arrItems.size()) AfxThrowInvalidArgException();
  MoveTo(m_nPosition);
  return m_nPosition < m_arrItems.size();
}

void ItemList::MoveTo(std::size_t position) {
  m_pCurrent = &m_arrItems[position];
  m_nPosition = position + 1;
}

bool ItemList::LocateFile(const std::wstring& path) {
  FindFile();
  if (m_arrItems.empty()) return false;
  const std::size_t found = IndexOf(path);
  MoveTo(std::min(found, m_arrItems.size() - 1));
  return found < m_arrItems.size();
}

std::size_t ItemList::IndexOf(const std::wstring& path) {
  if (!m_bLookedUp) {
    m_bLookedUp = true;
    return IndexByWalking(path);
  }
  if (m_index.empty()) BuildIndex();
  const std::size_t hash = FoldedHash(path);
  auto entry = std::lower_bound(m_index.begin(), m_index.end(), std::pair(hash, std::size_t{0}));
  for (; entry != m_index.end() && entry->first == hash; ++entry) {
    if (SamePath(m_arrItems[entry->second].m_strPath, path)) return entry->second;
  }
  return m_arrItems.size();
}

std::size_t ItemList::IndexByWalking(const std::wstring& path) const {
  const auto found =
      std::find_if(m_arrItems.begin(), m_arrItems.end(),
                   [&](const CIsoItemInfo& item) { return SamePath(item.m_strPath, path); });
  return static_cast<std::size_t>(found - m_arrItems.begin());
}

void ItemList::BuildIndex() {
  m_index.reserve(m_arrItems.size());
  for (std::size_t i = 0; i < m_arrItems.size(); ++i) {
    m_index.emplace_back(FoldedHash(m_arrItems[i].m_strPath), i);
  }
  std::sort(m_index.begin(), m_index.end());
}

}  // namespace iso
