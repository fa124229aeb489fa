// The one-line summary texts: numbers, ratios, dates and the counting rules.
#pragma once

#include <string>

#include "frame/foldermap.h"
#include "frame/itempath.h"
#include "morvunp/unpacker.h"

namespace frame {

/// Unsigned decimal, grouped in threes from the right with one blank.
std::wstring FormatOfNumber64(ULONGLONG number);

/// (hi * 4294967295.0 + lo) + hi, in doubles.
double ConvUInt64ToDouble(ULONGLONG number);

/// part / whole * 100 in double precision, truncated; 0 when `whole` is 0.
LONGLONG PercentageOf(ULONGLONG part, ULONGLONG whole);

/// A time value in local time by a format of wcsftime; empty when it cannot be
/// converted or is longer than 127 characters.
std::wstring LocalTimeText(__time64_t time, LPCWSTR format);

/// The date and time of the summary texts.
inline std::wstring DateTimeText(__time64_t time) { return LocalTimeText(time, L"%x %X"); }

/// Sums over the items of a folder or an archive.
struct Totals {
  ULONGLONG nFiles = 0;
  ULONGLONG nSize = 0;
  ULONGLONG nPacked = 0;
  FolderMap folders;

  void AddFile(ULONGLONG size, ULONGLONG packed);
  /// The folder / archive text of formats that know packed sizes.
  std::wstring Text() const;
};

/// "Size - %s bytes, Packed - %s bytes, Ratio - %d%%".
std::wstring SizesText(ULONGLONG size, ULONGLONG packed);

/// What an item adds to the totals of a format.
struct ItemSizes {
  ULONGLONG size;
  ULONGLONG packed;
};

/// Sums the items whose paths start with `prefix` ("" for the whole archive,
/// else a folder path and a backslash). `sizesOf` gives a full record's sizes.
template <class U, class SizesOf>
Totals SumItems(U& unpacker, const std::wstring& prefix, SizesOf sizesOf) {
  Totals totals;
  WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& info) {
    if (!info.strPath.starts_with(prefix)) return true;
    if (info.bFolder == 0) {
      const ItemSizes sizes = sizesOf(info);
      totals.AddFile(sizes.size, sizes.packed);
    } else if (info.strPath.size() > prefix.size()) {
      CheckFolderMap(totals.folders, info.strPath.substr(prefix.size()));
    }
    return true;
  });
  return totals;
}

}  // namespace frame
