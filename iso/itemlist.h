// The list of an image's items, its cursor and its look-ups.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/pathindex.h"
#include "iso/udf.h"
#include "morvunp/isounpacker.h"

namespace iso {

/// Where the data of a UDF file is.
struct UdfAllocation {
  /// Index of the logical volume that holds the file.
  int m_nLogicalVolume = 0;
  /// The data is in m_arrData, not in m_arrExtents.
  bool m_bDataInICB = false;
  std::vector<UDFEXTENT> m_arrExtents;
  std::vector<BYTE> m_arrData;
};

/// One file or folder of the image.
class CIsoItemInfo : public CObject {
 public:
  /// Components joined by a backslash, no leading one; the name comes last.
  std::wstring m_strPath;
  /// Characters of the name, which may hold a backslash itself.
  DWORD m_nNameLength = 0;
  /// Seconds since 1970-01-01 00:00 UTC.
  __time64_t m_timeModified = 0;
  /// ISO 9660: data length in bytes and logical block number of the extent.
  DWORD m_nSize = 0;
  DWORD m_nLocation = 0;
  /// UDF: last access, information length in bytes, logical blocks recorded.
  __time64_t m_timeAccessed = 0;
  ULONGLONG m_nSize64 = 0;
  ULONGLONG m_nBlocksRecorded = 0;
  /// UDF files only.
  std::unique_ptr<UdfAllocation> m_pAllocation;
  BYTE m_bFolder = 0;
  BYTE m_bHidden = 0;
  /// The path gate lets this item through: its own name and those of all
  /// folders above it are single, harmless components.
  BYTE m_bSafe = 0;

  std::wstring_view Name() const {
    return std::wstring_view(m_strPath).substr(m_strPath.size() - m_nNameLength);
  }
};

/// The folder that items are added to.
struct ItemFolder {
  /// Empty for the root.
  std::wstring path;
  /// The path gate lets the folder through.
  bool safe = true;
};

/// A new item of this name in a folder: name, path and gate are set.
CIsoItemInfo MakeItem(std::wstring_view name, const ItemFolder& parent);

/// Items in depth-first pre-order, with one cursor.
class ItemList {
 public:
  const CIsoItemInfo& Append(CIsoItemInfo item) { return m_arrItems.emplace_back(std::move(item)); }
  void RemoveAllItems();

  /// Puts the cursor before the first item. True when there is one.
  bool FindFile();
  /// Makes the next item current. True when more items follow it. Throws
  /// CInvalidArgException past the last one.
  bool FindNextFile();
  /// The current item; null before the first.
  const CIsoItemInfo* Current() const { return m_pCurrent; }

  /// Makes the first item of this path current, ignoring case; otherwise the
  /// last item becomes current and the result is false.
  bool LocateFile(const std::wstring& path);

 private:
  void MoveTo(std::size_t position);

  /// A deque: growing it moves no item, so the current one stays in place.
  std::deque<CIsoItemInfo> m_arrItems;
  frame::PathIndex m_index;
  std::size_t m_nPosition = 0;
  const CIsoItemInfo* m_pCurrent = nullptr;
};

}  // namespace iso
