// The blocks of the old format (RAR 1.5 to 4), as its makers publish them.
#pragma once

#include <string>
#include <string_view>

#include "frame/littleendian.h"

namespace morvunp::rar {

/// What archives of the format begin with; a block itself.
inline constexpr std::string_view kOldSignature("Rar!\x1A\x07\0", 7);

/// The beginning of a block: a checksum of two bytes, a type, flags, a size. All
/// numbers are little-endian.
class OldBlock {
 public:
  /// As much as is looked at.
  static constexpr DWORD kLength = 36;
  /// As much as every block has.
  static constexpr DWORD kShortest = 7;

  static constexpr BYTE kMain = 0x73;
  static constexpr BYTE kFile = 0x74;
  static constexpr BYTE kEnd = 0x7B;

  /// What is not there counts as zeros.
  explicit OldBlock(std::string bytes) : m_bytes(std::move(bytes)) { m_bytes.resize(kLength); }

  /// The low half of the CRC-32 of the rest of the header.
  DWORD Checksum() const { return Word(0); }
  BYTE Type() const { return Byte(2); }
  DWORD HeaderSize() const { return Word(5); }
  bool IsFile() const { return Type() == kFile; }
  /// It says how much data follows; every file does.
  bool HasData() const { return (Flags() & kHasData) != 0; }
  /// Bytes behind the header. Of a file its packed data; the high half stands
  /// further behind where it is large.
  ULONGLONG DataSize() const {
    if (!HasData() && !IsFile()) return 0;
    const bool isLarge = (IsFile() || Type() == kService) && (Flags() & kIsLarge) != 0;
    return ULONGLONG{isLarge ? Dword(32) : 0} << 32 | Dword(7);
  }

  /// Of a file: it began in an earlier volume.
  bool IsContinuation() const { return IsFile() && (Flags() & kSplitBefore) != 0; }
  /// Of a file: its data is its content.
  bool IsPlain() const { return Byte(25) == kStored && (Flags() & kSplitOrEncrypted) == 0; }
  /// Of the main block: all blocks behind it are encrypted.
  bool HidesBlocks() const { return (Flags() & kEncryptsHeaders) != 0; }
  /// Of the main block: a comment that the checksum leaves out.
  bool HasComment() const { return (Flags() & kCommented) != 0; }

 private:
  static constexpr BYTE kService = 0x7A;
  static constexpr BYTE kStored = 0x30;
  static constexpr DWORD kHasData = 0x8000;
  static constexpr DWORD kIsLarge = 0x0100;
  static constexpr DWORD kSplitBefore = 0x0001;
  static constexpr DWORD kSplitOrEncrypted = 0x0007;
  static constexpr DWORD kCommented = 0x0002;
  static constexpr DWORD kEncryptsHeaders = 0x0080;

  const BYTE* At(std::size_t offset) const {
    return reinterpret_cast<const BYTE*>(m_bytes.data()) + offset;
  }
  BYTE Byte(std::size_t offset) const { return *At(offset); }
  WORD Word(std::size_t offset) const { return frame::GetLittleEndian16Bit(At(offset)); }
  DWORD Dword(std::size_t offset) const { return frame::GetLittleEndian32Bit(At(offset)); }
  DWORD Flags() const { return Word(3); }

  std::string m_bytes;
};

}  // namespace morvunp::rar
