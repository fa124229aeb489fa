// The records of a cabinet, turned from bytes into structs. Every bound is
// checked here and nowhere else.
#pragma once

#include "platform/cabinet/reader.h"

namespace cabinet {

/// A folder's unpacked blocks are of this size, but for its last.
inline constexpr std::size_t kBlockSize = 32768;
/// Bytes that the packed data of a block can have.
inline constexpr std::size_t kMostPacked = 65535;
/// CFDATA without bytes set apart.
inline constexpr std::size_t kBlockHeaderSize = 8;

/// CFHEADER.
struct Header {
  DWORD cabinetSize;
  /// Offset of the first CFFILE.
  DWORD filesOffset;
  /// Offset of the first CFFOLDER.
  DWORD foldersOffset;
  WORD folders;
  WORD files;
  WORD flags;
  WORD setId;
  /// Place in the set, from 0.
  WORD index;
  /// Bytes set apart behind each CFFOLDER and each CFDATA.
  BYTE folderReserve;
  BYTE blockReserve;
  /// Names of the neighbours in the set; empty without one.
  char previousCabinet[CB_MAX_CAB_PATH];
  char previousDisk[CB_MAX_CAB_PATH];
  char nextCabinet[CB_MAX_CAB_PATH];
  char nextDisk[CB_MAX_CAB_PATH];

  bool HasPrevious() const { return (flags & 0x0001) != 0; }
  bool HasNext() const { return (flags & 0x0002) != 0; }
  bool HasReserve() const { return (flags & 0x0004) != 0; }
};

/// CFFOLDER.
struct Folder {
  /// Offset of the first CFDATA.
  DWORD dataOffset;
  WORD blocks;
  /// Method in the low four bits, its parameters above.
  WORD compression;
};

/// CFFILE.
struct File {
  DWORD size;
  /// Where the file begins in its folder, unpacked.
  DWORD offset;
  /// Index of the folder, or one of the three values below.
  WORD folder;
  WORD date;
  WORD time;
  WORD attributes;
  /// As recorded, zero-terminated; in the reader's buffer.
  const char* name;

  static constexpr WORD kFromPrevious = 0xFFFD;
  static constexpr WORD kToNext = 0xFFFE;
  static constexpr WORD kFromPreviousToNext = 0xFFFF;

  bool IsFromPrevious() const { return folder == kFromPrevious || folder == kFromPreviousToNext; }
  bool IsToNext() const { return folder == kToNext || folder == kFromPreviousToNext; }
};

/// CFDATA.
struct Block {
  DWORD checksum;
  /// Bytes of packed data.
  WORD packedSize;
  /// Bytes unpacked; 0 when the block goes on in the next cabinet.
  WORD size;
  /// The packed data; in the reader's buffer.
  const BYTE* packed;
};

/// The header where the reader stands.
Header ReadHeader(Reader& reader);
/// Folder `index` of the cabinet.
Folder ReadFolder(Reader& reader, const Header& header, WORD index);
/// The file entry where the reader stands.
File ReadFile(Reader& reader);
/// The data block where the reader stands, its checksum verified.
Block ReadBlock(Reader& reader, const Header& header);

}  // namespace cabinet
