#include "iso/itemlist.h"

#include <algorithm>
#include <cwctype>
#include <memory>

#include "frame/itempath.h"
#include "frame/pathgate.h"

namespace iso {
namespace {

/// The hash of a text that another one precedes; equal for texts that differ
/// in case only.
std::size_t FoldedHash(std::wstring_view text, std::size_t hash = 0) {
  for (const wchar_t c : text) {
    hash = hash * 1099511628211U + std::towlower(static_cast<std::wint_t>(c));
  }
  return hash;
}

template <class T>
std::span<const T> CopyOf(std::span<const T> elements, std::pmr::memory_resource& memory) {
  if (elements.empty()) return {};
  auto* const copy = static_cast<T*>(memory.allocate(elements.size_bytes(), alignof(T)));
  std::uninitialized_copy(elements.begin(), elements.end(), copy);
  return {copy, elements.size()};
}

}  // namespace

CIsoItemInfo& ItemList::Append(std::wstring_view name, ItemIndex parent) {
  const bool inRoot = parent == kRoot;
  const bool parentSafe = inRoot || m_arrItems[parent].m_bSafe != 0;
  // A folder without a name in the root adds no separator.
  const std::size_t above = PathLengthOf(parent);
  CIsoItemInfo& item = m_arrItems.emplace_back();
  const auto kept = CopyOf(std::span(name), m_memory);
  item.m_strName = {kept.data(), kept.size()};
  item.m_nParent = parent;
  item.m_nPathLength = static_cast<DWORD>((above == 0 ? 0 : above + 1) + name.size());
  item.m_bSafe = parentSafe && frame::IsSafeName(name, inRoot) ? 1 : 0;
  return item;
}

UdfDetails& ItemList::AppendDetails(CIsoItemInfo& item) {
  item.m_nLocation = static_cast<DWORD>(m_arrDetails.size());
  return m_arrDetails.emplace_back();
}

UdfAllocation ItemList::Keep(const UdfAllocation& allocation) {
  UdfAllocation kept = allocation;
  kept.m_arrExtents = CopyOf(allocation.m_arrExtents, m_memory);
  kept.m_arrData = CopyOf(allocation.m_arrData, m_memory);
  return kept;
}

void ItemList::RemoveAllItems() {
  m_arrItems.clear();
  m_arrDetails.clear();
  m_memory.release();
  m_nKnownFolder = kRoot;
  m_strKnownFolder.clear();
  m_index.clear();
  m_bLookedUp = false;
  FindFile();
}

void ItemList::GetPath(const CIsoItemInfo& item, std::wstring& path) const {
  const std::wstring& folder = FolderPath(item.m_nParent);
  path.assign(folder);
  if (!folder.empty()) path += frame::kSeparator;
  path += item.m_strName;
}

const std::wstring& ItemList::FolderPath(ItemIndex folder) const {
  if (folder == m_nKnownFolder) return m_strKnownFolder;
  // From the end, so that no more than the text is copied at any depth.
  const std::size_t length = PathLengthOf(folder);
  m_strKnownFolder.assign(length, frame::kSeparator);
  std::size_t end = length;
  for (ItemIndex i = folder; i != kRoot; i = m_arrItems[i].m_nParent) {
    const std::wstring_view name = m_arrItems[i].m_strName;
    end = m_arrItems[i].m_nPathLength - name.size();
    name.copy(m_strKnownFolder.data() + end, name.size());
  }
  m_nKnownFolder = folder;
  return m_strKnownFolder;
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

bool ItemList::HasPath(const CIsoItemInfo& item, const std::wstring& path) const {
  if (item.m_nPathLength != path.size()) return false;
  std::wstring own;
  GetPath(item, own);
  return _wcsicmp(own.c_str(), path.c_str()) == 0;
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
    if (HasPath(m_arrItems[entry->second], path)) return entry->second;
  }
  return m_arrItems.size();
}

std::size_t ItemList::IndexByWalking(const std::wstring& path) const {
  const auto found = std::find_if(m_arrItems.begin(), m_arrItems.end(),
                                  [&](const CIsoItemInfo& item) { return HasPath(item, path); });
  return static_cast<std::size_t>(found - m_arrItems.begin());
}

void ItemList::BuildIndex() {
  m_index.reserve(m_arrItems.size());
  for (const CIsoItemInfo& item : m_arrItems) {
    // A folder comes before what is in it: its hash is already there.
    const std::size_t above = PathLengthOf(item.m_nParent);
    const std::size_t start = above == 0 ? 0 : FoldedHash(L"\\", m_index[item.m_nParent].first);
    m_index.emplace_back(FoldedHash(item.m_strName, start), m_index.size());
  }
  std::sort(m_index.begin(), m_index.end());
}

}  // namespace iso
