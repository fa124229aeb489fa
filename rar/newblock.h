// The blocks of RAR 5, as its makers publish them.
#pragma once

#include <optional>
#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp::rar {

/// What archives of the format begin with, before their first block.
inline constexpr std::string_view kNewSignature("Rar!\x1A\x07\x01\0", 8);

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

  /// Bytes of the header that begins with these, at least kShortest of them; 0
  /// when no header does.
  static DWORD HeaderSize(std::string_view bytes);
  /// None when `header`, which is whole, is damaged.
  static std::optional<NewBlock> Decode(std::string_view header);
};

}  // namespace morvunp::rar
