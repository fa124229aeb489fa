#include "iso/itemlist.h"

#include <algorithm>

#include "frame/itempath.h"
#include "frame/pathgate.h"

namespace iso {
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
  m_index.Clear();
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
  const std::size_t found = m_index.Find(m_arrItems, path);
  MoveTo(std::min(found, m_arrItems.size() - 1));
  return found < m_arrItems.size();
}

}  // namespace iso
