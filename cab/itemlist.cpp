#include "cab/itemlist.h"

#include <cstring>

#include "frame/ansitext.h"

namespace morvunp::cab {

std::wstring DecodeName(std::string_view name, WORD attribs, bool mayBeUtf8) {
  if (!mayBeUtf8 || (attribs & _A_NAME_IS_UTF) == 0) return frame::DecodeAnsi(name);
  const platform::AnsiCodePageScope utf8("UTF-8");
  return frame::DecodeAnsi(name);
}

CCabItemInfo ItemOf(const FDINOTIFICATION& notification, bool mayBeUtf8) {
  CCabItemInfo item;
  item.m_strPath = DecodeName(notification.psz1, notification.attribs, mayBeUtf8);
  item.m_nSize = notification.cb;
  item.m_nDate = notification.date;
  item.m_nTime = notification.time;
  item.m_nAttribs = notification.attribs;
  return item;
}

void ItemList::RemoveAllItems() {
  m_nPosition = kNoWalk;
  m_bHasCurrent = false;
  m_arrRecords.clear();
  m_names.clear();
  m_index.Clear();
}

void ItemList::Append(const FDINOTIFICATION& notification) {
  const std::size_t length = std::strlen(notification.psz1);
  m_arrRecords.push_back({.nameStart = static_cast<DWORD>(m_names.size()),
                          .nameLength = static_cast<WORD>(length),
                          .attribs = notification.attribs,
                          .time = notification.time,
                          .date = notification.date,
                          .size = notification.cb});
  m_names.append(notification.psz1, length);
}

CCabItemInfo ItemList::operator[](std::size_t position) const {
  const Record& record = m_arrRecords[position];
  CCabItemInfo item;
  item.m_strPath = DecodeName(std::string_view(m_names).substr(record.nameStart, record.nameLength),
                              record.attribs, m_bUtf8Names);
  item.m_nSize = record.size;
  item.m_nDate = record.date;
  item.m_nTime = record.time;
  item.m_nAttribs = record.attribs;
  return item;
}

void ItemList::Rewind() {
  m_nPosition = 0;
  m_bHasCurrent = false;
}

bool ItemList::FindNextFile() {
  if (m_arrRecords.empty()) return false;
  if (m_nPosition >= m_arrRecords.size()) AfxThrowInvalidArgException();
  MoveTo(m_nPosition);
  return m_nPosition != m_arrRecords.size();
}

void ItemList::GoToEnd() {
  if (!m_arrRecords.empty()) MoveTo(m_arrRecords.size() - 1);
}

void ItemList::MoveTo(std::size_t position) {
  m_current = (*this)[position];
  m_bHasCurrent = true;
  m_nPosition = position + 1;
}

bool ItemList::LocateFile(const std::wstring& path) {
  const std::size_t found = m_index.Find(
      m_arrRecords.size(),
      [this](std::size_t i, std::wstring& text) { text = (*this)[i].m_strPath; }, path);
  if (found == m_arrRecords.size()) {
    GoToEnd();
    return false;
  }
  MoveTo(found);
  return true;
}

}  // namespace morvunp::cab
