// Little-endian numbers, assembled byte by byte.
#pragma once

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

inline WORD GetLittleEndian16Bit(const BYTE* bytes) {
  return static_cast<WORD>(bytes[0] | bytes[1] << 8);
}

inline DWORD GetLittleEndian32Bit(const BYTE* bytes) {
  return GetLittleEndian16Bit(bytes) | DWORD{GetLittleEndian16Bit(bytes + 2)} << 16;
}

inline ULONGLONG GetLittleEndian64Bit(const BYTE* bytes) {
  return GetLittleEndian32Bit(bytes) | ULONGLONG{GetLittleEndian32Bit(bytes + 4)} << 32;
}

}  // namespace morvunp::frame
