#include "cab/itemlist.h"

#include "frame/ansitext.h"

namespace cab {

void ItemList::RemoveAllItems() {
  m_nPosition = kNoWalk;
  m_pCurrent = nullptr;
  m_arrItems.clear();
  m_index.Clear();
}

void ItemList::Append(const FDINOTIFICATION& notification) {
  CCabItemInfo& item = m_arrItems.emplace_back();
  item.m_strPath = frame::DecodeAnsi(notification.psz1);
  item.m_nSize = notification.cb;
  item.m_nDate = notification.date;
  item.m_nTime = notification.time;
  item.m_nAttribs = notification.attribs;
}

void ItemList::Rewind() {
  m_nPosition = 0;
  m_pCurrent = nullptr;
}

bool ItemList::FindNextFile() {
  if (m_arrItems.empty()) return false;
  if (m_nPosition >= m_arrItems.size()) AfxThrowInvalidArgException();
  MoveTo(m_nPosition);
  return m_nPosition != m_arrItems.size();
}

void ItemList::GoToEnd() {
  if (!m_arrItems.empty()) MoveTo(m_arrItems.size() - 1);
}

void ItemList::MoveTo(std::size_t position) {
  m_pCurrent = &m_arrItems[position];
  m_nPosition = static_cast<WORD>(position + 1);
}

bool ItemList::LocateFile(const std::wstring& path) {
  const std::size_t found = m_index.Find(
      m_arrItems.size(),
      [this](std::size_t i, std::wstring& text) { text = m_arrItems[i].m_strPath; }, path);
  if (found == m_arrItems.size()) {
    GoToEnd();
    return false;
  }
  MoveTo(found);
  return true;
}

}  // namespace cab
