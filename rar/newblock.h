// The blocks of RAR 5, as its makers publish them.
#pragma once

#include <optional>
#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp::rar {

/// What archives of the format begin with, before their first block.
inline constexpr std::string_view kNewSignature("Rar!\x1A\x07\x01\0", 8);

/// Takes numbers and texts from the front of a header; zeros and nothing behind
/// its end. The bytes are not owned.
class Fields {
 public:
  explicit Fields(std::string_view bytes) : m_bytes(bytes) {}

  bool IsAtEnd() const { return m_bytes.empty(); }
  /// More was taken than there was.
  bool IsCut() const { return m_bCut; }
  std::size_t Left() const { return m_bytes.size(); }
  std::string_view Take(ULONGLONG length);
  std::string_view TakeLast(ULONGLONG length) const;
  /// Of seven bits a byte, the lowest first.
  ULONGLONG Number();
  /// Of four bytes, the lowest first.
  DWORD Number32();

 private:
  std::string_view m_bytes;
  bool m_bCut = false;
};

struct NewBlock {
  enum Type : ULONGLONG { kMain = 1, kFile = 2, kEncryption = 4, kEnd = 5 };

  /// Bytes of the shortest header, which tell the length of any.
  static constexpr DWORD kShortest = 7;
  /// Bytes of the end block of an archive or volume.
  static constexpr DWORD kEndLength = 8;

  ULONGLONG type = 0;
  /// Of a file: it began in an earlier volume.
  bool isContinuation = false;
  /// Bytes behind the header.
  ULONGLONG dataSize = 0;
  /// What follows the fields that all blocks have, and how much of its end are
  /// further records. Bytes of the header.
  std::string_view rest{};
  ULONGLONG recordsSize = 0;

  /// Bytes of the header that begins with these, at least kShortest of them; 0
  /// when no header does.
  static DWORD HeaderSize(std::string_view bytes);
  /// None when `header`, which is whole, is damaged.
  static std::optional<NewBlock> Decode(std::string_view header);
};

}  // namespace morvunp::rar
