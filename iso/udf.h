// ECMA-167 structures with the UDF profile: bytes to structs. All bounds of
// what a descriptor records are checked here; nothing else looks at the bytes.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "iso/recorddate.h"
#include "morvunp/platform/platform.h"

namespace morvunp::iso {

/// Tag identifiers of ECMA-167 3/7.2.1 and 4/7.2.1 that this reader knows.
enum class UdfTag : WORD {
  kAnchor = 2,
  kPartition = 5,
  kLogicalVolume = 6,
  kTerminating = 8,
  kFileSet = 256,
  kFileIdentifier = 257,
  kAllocationExtent = 258,
  kFileEntry = 261,
};

/// The two high bits of an extent's length, ECMA-167 4/14.14.1.1.
enum class UdfExtentType : BYTE { kRecorded, kAllocated, kNotAllocated, kContinuation };

/// A piece of a file or folder.
struct UDFEXTENT {
  /// Bytes in the low 30 bits, the type in the two high ones.
  DWORD length;
  /// Logical block number within the partition.
  DWORD position;
  WORD partition;

  DWORD Bytes() const { return length & 0x3FFFFFFF; }
  UdfExtentType Type() const { return static_cast<UdfExtentType>(length >> 30); }
};

/// A long allocation descriptor (4/14.14.2) that leads to a structure.
struct UDFICB {
  /// Bytes; the two high bits hold the extent type.
  DWORD length;
  DWORD location;
  WORD partition;

  DWORD Bytes() const { return length & 0x3FFFFFFF; }
};

/// ECMA-167 3/10.5. Start and length count sectors.
struct UDFPARTITION {
  WORD number = 0;
  DWORD start = 0;
  DWORD length = 0;
  /// Index of the logical volume that uses it; -1 while none does.
  int owner = -1;
};

/// ECMA-167 3/10.7.2, type 1.
struct UDFPARTMAP {
  BYTE type = 0;
  BYTE length = 0;
  WORD volumeSequenceNumber = 0;
  WORD partitionNumber = 0;
  /// Index of the partition with that number; set when volumes are bound.
  int partitionIndex = -1;
};

/// ECMA-167 3/10.6.
struct UDFVOLUME {
  /// 3/10.6.4, a d-string as stored.
  std::array<BYTE, 128> identifier;
  /// Bytes.
  DWORD blockSize;
  UDFICB fileSet;
  std::vector<UDFPARTMAP> partitionMaps;
  /// Root directory of the volume's file set, once it has been read.
  std::vector<UDFICB> rootICBs;
};

/// Where the main volume descriptor sequence is (3/10.2.1): bytes and sector.
struct UdfSequence {
  DWORD length;
  DWORD location;
};

/// 4/14.4, the fields in use. Points into the directory's bytes.
struct UdfFileIdentifier {
  bool hidden;
  bool parent;
  UDFICB icb;
  std::span<const BYTE> identifier;
  /// Bytes to the next descriptor.
  std::size_t length;
};

/// 4/14.9, the fields in use. Points into the entry's bytes.
struct UdfFileEntry {
  bool folder;
  ULONGLONG informationLength;
  ULONGLONG blocksRecorded;
  RecordedDate accessed;
  RecordedDate modified;
  /// 4/14.6.8, bits 0 to 2: 0 short, 1 long descriptors, 3 embedded data.
  BYTE allocationType;
  DWORD extendedAttributesLength;
  /// Allocation descriptors or embedded data.
  std::span<const BYTE> allocation;
};

inline constexpr std::size_t kUdfTagLength = 16;
inline constexpr DWORD kUdfFileSetLength = 512;
/// A file entry, 4/14.9, up to its extended attributes.
inline constexpr std::size_t kUdfEntryHeader = 176;
inline constexpr BYTE kUdfShortDescriptors = 0;
inline constexpr BYTE kUdfLongDescriptors = 1;
inline constexpr BYTE kUdfEmbedded = 3;

/// The descriptor at the start of `bytes` has this identifier and a right
/// checksum (3/7.2.3). False for fewer than 16 bytes.
bool UDFCheckTag(std::span<const BYTE> bytes, UdfTag tag);

/// None when the descriptor is another one, damaged or cut.
std::optional<UdfSequence> DecodeAnchor(std::span<const BYTE> sector);
std::optional<UDFPARTITION> DecodePartition(std::span<const BYTE> sector);
std::optional<UDFICB> DecodeFileSetRoot(std::span<const BYTE> bytes);
/// None as well for entries that are neither files nor folders, and for
/// allocation that does not lie inside the entry.
std::optional<UdfFileEntry> DecodeFileEntry(std::span<const BYTE> bytes);
/// None for a descriptor that does not lie inside `bytes` or whose padding is
/// not zero. The tag of a parent entry is not looked at.
std::optional<UdfFileIdentifier> DecodeFileIdentifier(std::span<const BYTE> bytes);
/// The allocation descriptors of an allocation extent descriptor (4/14.5).
std::optional<std::span<const BYTE>> DecodeAllocationExtent(std::span<const BYTE> bytes);

/// The tag of a logical volume descriptor is checked already. None when it has
/// a partition map that is not of type 1 or does not lie inside the sector.
std::optional<UDFVOLUME> DecodeLogicalVolume(std::span<const BYTE> sector);

/// Appends allocation descriptors of type 0 or 1. Short ones refer to
/// `partition`. False when the last one is cut or the type is another one.
bool DecodeExtents(std::span<const BYTE> bytes, BYTE type, WORD partition,
                   std::vector<UDFEXTENT>& extents);

/// A file identifier: compression identifier 8 or 16 (UDF 2.1.1) and the
/// characters; empty for any other. Surrogate pairs become one character. The
/// text keeps its memory from one name to the next.
void GetDString(const BYTE* bytes, WORD length, std::wstring& text);

}  // namespace morvunp::iso
