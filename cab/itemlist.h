// The list of a cabinet's items, its cursor and its look-ups.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "frame/pathindex.h"
#include "morvunp/cabunpacker.h"

namespace morvunp::cab {

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
  /// Bytes, also beyond 2 GiB.
  DWORD Size() const { return static_cast<DWORD>(m_nSize); }
  DWORD DosDateTime() const { return DWORD{m_nDate} << 16 | m_nTime; }
};

/// A name as a cabinet records it: in the ANSI code page, or in UTF-8 where the
/// attributes say so and `mayBeUtf8`.
std::wstring DecodeName(std::string_view name, WORD attribs, bool mayBeUtf8);

/// The item that a notification is about.
CCabItemInfo ItemOf(const FDINOTIFICATION& notification, bool mayBeUtf8);

/// Items in the order of the table, with one cursor. Every look-up scans the
/// cabinet anew, so the list is made to be filled fast: it keeps what the table
/// holds and makes items of it when they are asked for.
class ItemList {
 public:
  /// Empties the list; there is no walk until Rewind.
  void RemoveAllItems();
  void Append(const FDINOTIFICATION& notification);
  /// Names that are marked as UTF-8 are read so.
  void SetUtf8Names(bool areUtf8) { m_bUtf8Names = areUtf8; }

  std::size_t size() const { return m_arrRecords.size(); }
  CCabItemInfo operator[](std::size_t position) const;
  /// Place of the current item.
  std::size_t Position() const { return m_nPosition - (m_bHasCurrent ? 1 : 0); }
  /// The current item; null before the first.
  const CCabItemInfo* Current() const { return m_bHasCurrent ? &m_current : nullptr; }

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
  struct Record {
    /// The name's place among all names.
    DWORD nameStart;
    WORD nameLength;
    WORD attribs;
    WORD time;
    WORD date;
    LONG size;
  };

  void MoveTo(std::size_t position);

  static constexpr std::size_t kNoWalk = static_cast<std::size_t>(-1);

  std::vector<Record> m_arrRecords;
  /// All names as the table has them.
  std::string m_names;
  frame::PathIndex m_index;
  /// The item that the cursor takes next.
  std::size_t m_nPosition = kNoWalk;
  bool m_bHasCurrent = false;
  bool m_bUtf8Names = false;
  CCabItemInfo m_current;
};

}  // namespace morvunp::cab
