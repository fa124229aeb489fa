// Bits of an LZX block: most significant first, in 16-bit little-endian words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "morvunp/platform/types.h"

namespace cabinet {

/// The words are given with their bytes exchanged, which makes them a plain
/// sequence of bits. Behind their end the reader sees zeros; reading there is
/// harmless, and IsOverrun tells of it.
class BitReader {
 public:
  /// Bytes behind the given ones that must be there, as zeros.
  static constexpr std::size_t kPadding = 16;
  /// Bits that are certainly there after Refill.
  static constexpr unsigned kRefilled = 56;

  explicit BitReader(std::span<const BYTE> bytes)
      : m_pStart(bytes.data()), m_pNext(bytes.data()), m_pEnd(bytes.data() + bytes.size()) {}

  void Refill() {
    if (m_pNext > m_pEnd + kPadding - sizeof m_nBits) [[unlikely]] {
      // Nothing but zeros from here on: leave the reader where it is.
      m_nCount |= kRefilled;
      m_bPastPadding = true;
      return;
    }
    std::uint64_t word = 0;
    std::memcpy(&word, m_pNext, sizeof word);
    m_nBits |= __builtin_bswap64(word) >> m_nCount;
    m_pNext += (63 - m_nCount) >> 3;
    m_nCount |= kRefilled;
  }

  /// The next bits without taking them; 1 to 32 of those refilled.
  DWORD Peek(unsigned count) const { return static_cast<DWORD>(m_nBits >> (64 - count)); }
  void Drop(unsigned count) {
    m_nBits <<= count;
    m_nCount -= count;
  }
  /// Takes bits of those refilled; 0 to 32.
  DWORD Take(unsigned count) {
    const auto value = static_cast<DWORD>(m_nBits >> 1 >> (63 - count));
    Drop(count);
    return value;
  }
  /// Refills and takes.
  DWORD Read(unsigned count) {
    Refill();
    return Take(count);
  }

  /// Bits taken so far.
  std::size_t Position() const {
    return static_cast<std::size_t>(m_pNext - m_pStart) * 8 - m_nCount;
  }
  bool IsOverrun() const {
    return m_bPastPadding || Position() > static_cast<std::size_t>(m_pEnd - m_pStart) * 8;
  }
  /// Goes on at a byte of the input.
  void Seek(std::size_t byte) {
    m_pNext = m_pStart + byte;
    m_nBits = 0;
    m_nCount = 0;
  }

 private:
  const BYTE* m_pStart;
  const BYTE* m_pNext;
  const BYTE* m_pEnd;
  /// The next bits, from the top down; below the counted ones may lie more.
  std::uint64_t m_nBits = 0;
  unsigned m_nCount = 0;
  bool m_bPastPadding = false;
};

}  // namespace cabinet
