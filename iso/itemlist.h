// The list of an image's items, its cursor and its look-ups.
#pragma once

#include <deque>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/pathindex.h"
#include "iso/udf.h"
#include "morvunp/isounpacker.h"

namespace morvunp::iso {

/// Where the data of a UDF file is. Owns nothing.
struct UdfAllocation {
  /// Index of the logical volume that holds the file.
  int m_nLogicalVolume = 0;
  /// The data is in m_arrData, not in m_arrExtents.
  bool m_bDataInICB = false;
  std::span<const UDFEXTENT> m_arrExtents;
  std::span<const BYTE> m_arrData;
};

/// What only UDF records of an item.
struct UdfDetails {
  /// Seconds since 1970-01-01 00:00 UTC.
  __time64_t m_timeAccessed = 0;
  /// Logical blocks recorded.
  ULONGLONG m_nBlocksRecorded = 0;
  /// Files only. Points into the list's memory.
  UdfAllocation m_allocation;
};

/// Position of an item in the list.
using ItemIndex = DWORD;
/// The folder of the items that are in none.
inline constexpr ItemIndex kRoot = 0xFFFFFFFF;

/// One file or folder of the image. Images hold many: an item owns no memory
/// of its own, and its path is put together when somebody asks for it.
struct CIsoItemInfo {
  /// Points into the list's memory. May hold a backslash itself.
  std::wstring_view m_strName;
  /// Seconds since 1970-01-01 00:00 UTC.
  __time64_t m_timeModified = 0;
  /// Bytes: data length (ISO 9660) or information length (UDF).
  ULONGLONG m_nSize = 0;
  /// The folder it is in, or kRoot.
  ItemIndex m_nParent = kRoot;
  /// Characters of the path.
  DWORD m_nPathLength = 0;
  /// ISO 9660: logical block number of the extent. UDF: position of the details.
  DWORD m_nLocation = 0;
  BYTE m_bFolder = 0;
  BYTE m_bHidden = 0;
  /// The path gate lets this item through: its own name and those of all
  /// folders above it are single, harmless components.
  BYTE m_bSafe = 0;
};

/// Items in depth-first pre-order, with one cursor.
class ItemList {
 public:
  /// Adds an item of this name to a folder of the list; its name, parent, path
  /// length and gate are set. The reference stays valid.
  CIsoItemInfo& Append(std::wstring_view name, ItemIndex parent);
  /// Adds details for an item and gives it their position.
  UdfDetails& AppendDetails(CIsoItemInfo& item);
  /// A copy in the list's memory.
  UdfAllocation Keep(const UdfAllocation& allocation);
  void RemoveAllItems();

  /// Position of the item added last.
  ItemIndex Last() const { return static_cast<ItemIndex>(m_arrItems.size() - 1); }
  /// Characters in the path of a folder or of kRoot.
  std::size_t PathLengthOf(ItemIndex folder) const {
    return folder == kRoot ? 0 : m_arrItems[folder].m_nPathLength;
  }
  /// Components joined by a backslash, no leading one. Walking the list in its
  /// order costs no more than copying the texts.
  void GetPath(const CIsoItemInfo& item, std::wstring& path) const;
  /// Null in the list of an ISO 9660 image.
  const UdfDetails* DetailsOf(const CIsoItemInfo& item) const {
    return m_arrDetails.empty() ? nullptr : &m_arrDetails[item.m_nLocation];
  }

  /// Puts the cursor before the first item. True when there is one.
  bool FindFile();
  /// Makes the next item current. True when more items follow it. Throws
  /// CInvalidArgException past the last one.
  bool FindNextFile();
  /// Place of the current item.
  std::size_t Position() const { return m_nPosition - (m_nPosition != 0 ? 1 : 0); }
  /// The current item; null before the first.
  const CIsoItemInfo* Current() const { return m_pCurrent; }

  /// Makes the first item of this path current, ignoring case; otherwise the
  /// last item becomes current and the result is false.
  bool LocateFile(const std::wstring& path);

 private:
  static constexpr std::size_t kFirstMemory = std::size_t{64} * 1024;

  void MoveTo(std::size_t position);
  const std::wstring& FolderPath(ItemIndex folder) const;

  /// Deques: growing them moves nothing, so the current item stays in place.
  std::deque<CIsoItemInfo> m_arrItems;
  std::deque<UdfDetails> m_arrDetails;
  /// Names and allocations of all items, one after the other.
  std::pmr::monotonic_buffer_resource m_memory{kFirstMemory};
  /// The path of the folder that was asked for last: neighbours share it.
  mutable ItemIndex m_nKnownFolder = kRoot;
  mutable std::wstring m_strKnownFolder;
  frame::PathIndex m_index;
  std::size_t m_nPosition = 0;
  const CIsoItemInfo* m_pCurrent = nullptr;
};

}  // namespace morvunp::iso
