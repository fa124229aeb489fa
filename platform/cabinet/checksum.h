// The checksum of data blocks.
#pragma once

#include <cstddef>

#include "morvunp/platform/types.h"

namespace cabinet {

/// The exclusive or of `seed` and all four-byte little-endian numbers; one to
/// three bytes at the end count from the most significant down.
DWORD Checksum(const BYTE* bytes, std::size_t length, DWORD seed);

}  // namespace cabinet
