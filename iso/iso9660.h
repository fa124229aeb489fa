// ECMA-119 structures: bytes to structs. All bounds of what a volume records
// are checked here; nothing else looks at the bytes.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "iso/recorddate.h"
#include "morvunp/platform/platform.h"

namespace morvunp::iso {

/// ECMA-119 8.4, the fields in use.
struct PrimaryVolumeDescriptor {
  /// 8.4.12: logical block size in bytes.
  DWORD blockSize;
  /// 8.4.18: location (logical block) and data length (bytes) of the root.
  DWORD rootLocation;
  DWORD rootLength;
};

/// ECMA-119 8.4.1 to 8.4.3: type 1, "CD001", version 1. `block` holds at least
/// 7 bytes.
bool IsPrimaryVolumeDescriptor(const BYTE* block);

/// None when the block size is not one that a volume can have (a power of two
/// from 512 to 2048). `block` is one sector.
std::optional<PrimaryVolumeDescriptor> DecodePrimaryVolumeDescriptor(std::span<const BYTE> block);

/// ECMA-119 9.1, the fields in use. Points into the directory's bytes.
struct DirectoryRecord {
  /// 9.1.1: bytes to the next record.
  std::size_t recordLength;
  /// 9.1.3: logical block number of the extent.
  DWORD location;
  /// 9.1.4: data length in bytes.
  DWORD dataLength;
  /// 9.1.5, without the offset from Greenwich Mean Time.
  RecordedDate date;
  /// 9.1.6.
  bool directory;
  bool hidden;
  /// 9.1.11.
  std::string_view identifier;
};

/// Decodes the record at the start of `bytes`. None when it claims more than
/// there is, or its identifier more than the record.
std::optional<DirectoryRecord> DecodeDirectoryRecord(std::span<const BYTE> bytes);

/// 9.1.6: the directory bit and the existence bit of the file flags.
bool IsDirISO9660(const BYTE* flags);
bool IsHiddenISO9660(const BYTE* flags);

/// The item's name: the file identifier up to a zero byte, decoded in the ANSI
/// code page, without a version suffix ";1" and the dot that then ends it. The
/// text keeps its memory from one name to the next.
void GetNameItemISO9660(const DirectoryRecord& record, std::wstring& name);

}  // namespace morvunp::iso
