// One view of an item for all archive formats.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "morvunp/morvunp.h"
#include "morvunp/rarunpacker.h"

namespace host {

/// Refers to the record that it was made from and must not outlive it.
struct Item {
  /// In the library's form: components joined by a backslash.
  const std::wstring& path;
  std::wstring_view name;
  bool isFolder;
  bool isHidden;
  /// Bytes.
  std::uint64_t size;
  /// Bytes that the item occupies in the archive.
  std::uint64_t packedSize;
  /// Seconds since 1970-01-01 00:00 UTC; none when not recorded.
  std::optional<std::int64_t> modified;
  std::optional<std::int64_t> accessed;
  /// CRC-32 of the content; none when the archive has none, or an engine that
  /// checks it.
  std::optional<std::uint32_t> crc{};
  /// Only a right password gives the content.
  bool isEncrypted = false;
  /// Place in the walk, from 0, as reports have it.
  std::uint64_t position = 0;
};

Item ItemOf(const SEVENZIPFILEFULLINFO& record);
Item ItemOf(const CABFILEFULLINFO& record);
Item ItemOf(const ISOFILEFULLINFO& record);
Item ItemOf(const RARFILEFULLINFO& record);

/// Volume sets have a record for each part of a file. True for those after its
/// first, which AddPart adds to it.
template <class Record>
bool IsContinuation(const Record&) {
  return false;
}
bool IsContinuation(const RARFILEFULLINFO& record);
void AddPart(RARFILEFULLINFO& file, const RARFILEFULLINFO& part);

}  // namespace host
