// Little-endian numbers.
#pragma once

#include "morvunp/platform/types.h"

namespace cabinet {

inline WORD WordAt(const BYTE* bytes) { return static_cast<WORD>(bytes[0] | bytes[1] << 8); }

inline DWORD DwordAt(const BYTE* bytes) { return WordAt(bytes) | DWORD{WordAt(bytes + 2)} << 16; }

}  // namespace cabinet
