// The list of a cabinet's items, its cursor and its look-ups.
#pragma once

#include <deque>
#include <string>

#include "frame/pathindex.h"
#include "morvunp/cabunpacker.h"

namespace cab {

/// One file of the cabinet's table.
class CCabItemInfo : public CObject {
 public:
  WORD m_nAttribs = 0;
  /// MS-DOS time and date, local.
  WORD m_nTime = 0;
  WORD m_nDate = 0;
  /// Bytes.
  LONG m_nSize = 0;
  /// As recorded: folders separated by a backslash.
  std::wstring m_strPath;

  /// Recorded with a backslash at its end.
  bool IsFolder() const { return m_strPath.ends_with(L'\\'); }
  DWORD DosDateTime() const { return DWORD{m_nDate} << 16 | m_nTime; }
};

/// Items in the order of the table, with one cursor.
class ItemList {
 public:
  using Items = std::deque<CCabItemInfo>;

  /// Empties the list; there is no walk until Rewind.
  void RemoveAllItems();
  void Append(const FDINOTIFICATION& notification);

  const Items& All() const { return m_arrItems; }
  /// The current item; null before the first.
  const CCabItemInfo* Current() const { return m_pCurrent; }

  void Rewind();
  /// Makes the next item current. True when more items follow it. Throws
  /// CInvalidArgException past the last one.
  bool FindNextFile();
  /// Moves the cursor behind the last item.
  void GoToEnd();
  /// Makes the first item of this path current, ignoring case; otherwise the
  /// last item becomes current and the result is false.
  bool LocateFile(const std::wstring& path);

 private:
  void MoveTo(std::size_t position);

  static constexpr WORD kNoWalk = 0xFFFF;

  /// A deque: growing it moves no item, so the current one stays in place.
  Items m_arrItems;
  frame::PathIndex m_index;
  /// The item that the cursor takes next.
  WORD m_nPosition = kNoWalk;
  const CCabItemInfo* m_pCurrent = nullptr;
};

}  // namespace cab
