#include "platform/cabinet/lzxinput.h"

#include <algorithm>

namespace cabinet {

BitReader LzxInput::Exchange(std::span<const BYTE> packed, BYTE* words) {
  std::size_t size = packed.size();
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    words[i] = packed[i + 1];
    words[i + 1] = packed[i];
  }
  if (size % 2 != 0) {
    words[size - 1] = 0;
    words[size] = packed.back();
    ++size;
  }
  std::fill_n(words + size, BitReader::kPadding, BYTE{0});
  return BitReader({words, size});
}

void LzxInput::GoTo(std::size_t byte) {
  byte = std::min(byte, m_packed.size());
  if (byte >= m_nStart && (byte - m_nStart) % 2 == 0) {
    bits.Seek(byte - m_nStart);
  } else {
    m_nStart = byte;
    bits = Exchange(m_packed.subspan(byte), m_pWords);
  }
}

}  // namespace cabinet
