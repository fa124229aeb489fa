#include "iso/itemlist.h"

#include <algorithm>
#include <cwctype>

#include "frame/itempath.h"
#include "frame/pathgate.h"

namespace iso {
namespace {

constexpr std::size_t kFirstNames = std::size_t{64} * 1024;

/// The hash of a text that another one precedes; equal for texts that differ
/// in case only.
std::size_t FoldedHash(std::wstring_view text, std::size_t hash = 0) {
  for (const wchar_t c : text) {
    hash = hash * 1099511628211U + std::towlower(static_cast<std::wint_t>(c));
  }
  return hash;
}

std::wstring_view CopyOf(std::wstring_view text, std::pmr::memory_resource& memory) {
  auto* const copy =
      static_cast<wchar_t*>(memory.allocate(text.size() * sizeof(wchar_t), alignof(wchar_t)));
  std::copy(text.begin(), text.end(), copy);
  return {copy, text.size()};
}

}  // namespace

CIsoItemInfo& ItemList::Append(std::wstring_view name, ItemIndex parent) {
  if (!m_pNames) m_pNames = std::make_unique<std::pmr::monotonic_buffer_resource>(kFirstNames);
  const bool inRoot = parent == kRoot;
  const bool parentSafe = inRoot || m_arrItems[parent].m_bSafe != 0;
  // A folder without a name in the root adds no separator.
  const std::size_t above = PathLengthOf(parent);
  CIsoItemInfo& item = m_arrItems.emplace_back();
  item.m_strName = CopyOf(name, *m_pNames);
  item.m_nParent = parent;
  item.m_nPathLength = static_cast<DWORD>((above == 0 ? 0 : above + 1) + name.size());
  item.m_bSafe = parentSafe && frame::IsSafeName(name, inRoot) ? 1 : 0;
  return item;
}

UdfDetails& ItemList::AppendDetails(CIsoItemInfo& item) {
  item.m_nLocation = static_cast<DWORD>(m_arrDetails.size());
  return m_arrDetails.emplace_back();
}

void ItemList::RemoveAllItems() {
  m_arrItems.clear();
  m_arrDetails.clear();
  m_pNames.reset();
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
