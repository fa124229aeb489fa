// The one-line summary texts: numbers, ratios, dates and the counting rules.
#pragma once

#include <string>
#include <unordered_set>

#include "frame/foldermap.h"
#include "frame/itempath.h"
#include "frame/keyedhash.h"
#include "morvunp/platform/platform.h"

namespace morvunp::frame {

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

/// "Size - %s bytes".
std::wstring SizeText(ULONGLONG size);

/// "Size - %s bytes, Packed - %s bytes, Ratio - %d%%".
std::wstring SizesText(ULONGLONG size, ULONGLONG packed);

/// The text of one file in formats that know its CRC: date and time, sizes and
/// "CRC - %08x".
std::wstring FileTextWithCrc(__time64_t modified, ULONGLONG size, ULONGLONG packed, DWORD crc);

/// Sums over the items of a folder or an archive.
class Totals {
 public:
  /// Of the whole archive.
  Totals() = default;
  /// Of a folder, by its path inside the archive.
  explicit Totals(const std::wstring& folder) : m_prefix(folder + kSeparator) {}

  /// The whole archive is counted: the path of a file does not matter.
  bool CountsAll() const { return m_prefix.empty(); }

  /// Counts a file, in bytes, or a folder, when it lies below the folder.
  void AddFile(const std::wstring& path, ULONGLONG size, ULONGLONG packed);
  void AddFolder(const std::wstring& path);
  /// Further bytes that a file which was counted is packed in.
  void AddPart(const std::wstring& path, ULONGLONG packed);

  /// The folder / archive text of formats that know packed sizes.
  std::wstring Text() const;
  /// The text of cabinets, whose sum of sizes is kept in 32 bits.
  std::wstring TextOfSizes32() const;

 private:
  std::wstring CountsText() const;

  std::wstring m_prefix;
  ULONGLONG m_nFiles = 0;
  ULONGLONG m_nSize = 0;
  ULONGLONG m_nPacked = 0;
  /// Keys of a folder map. Only their number is told, so the paths are not kept.
  std::unordered_set<DWORD, KeyedHash> m_folders;
};

}  // namespace morvunp::frame
