// The checksum of archive headers.
#pragma once

#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// CRC-32 as ISO 3309 has it. Of a few bytes, so bit by bit.
DWORD Crc32(std::string_view bytes);

}  // namespace morvunp::frame
