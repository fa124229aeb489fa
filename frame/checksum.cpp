#include "frame/checksum.h"

namespace morvunp::frame {

DWORD Crc32(std::string_view bytes) {
  DWORD sum = 0xFFFFFFFF;
  for (const char c : bytes) {
    sum ^= static_cast<BYTE>(c);
    for (int i = 0; i < 8; ++i) sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

}  // namespace morvunp::frame
