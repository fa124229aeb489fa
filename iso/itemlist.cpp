#include "iso/itemlist.h"

#include <algorithm>
#include <memory>

#include "frame/itempath.h"
#include "output/pathgate.h"

namespace morvunp::iso {
namespace {

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
  item.m_bSafe = parentSafe && output::IsSafeName(name, inRoot) ? 1 : 0;
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
  m_index.Clear();
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
  m_strKnownFolder.assign(PathLengthOf(folder), frame::kSeparator);
  for (ItemIndex i = folder; i != kRoot; i = m_arrItems[i].m_nParent) {
    const std::wstring_view name = m_arrItems[i].m_strName;
    const std::size_t start = m_arrItems[i].m_nPathLength - name.size();
    name.copy(m_strKnownFolder.data() + start, name.size());
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
  const std::size_t found = m_index.Find(
      m_arrItems.size(),
      [this](std::size_t i, std::wstring& text) { GetPath(m_arrItems[i], text); }, path);
  MoveTo(std::min(found, m_arrItems.size() - 1));
  return found < m_arrItems.size();
}

}  // namespace morvunp::iso
