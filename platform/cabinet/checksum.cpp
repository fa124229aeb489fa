#include "platform/cabinet/checksum.h"

#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "whole words are read as they lie");

namespace cabinet {

DWORD Checksum(const BYTE* bytes, std::size_t length, DWORD seed) {
  // Two words at a time: exclusive or knows no carry.
  std::uint64_t pairs = 0;
  const std::size_t whole = length / sizeof pairs;
  for (std::size_t i = 0; i < whole; ++i) {
    std::uint64_t pair = 0;
    std::memcpy(&pair, bytes + i * sizeof pair, sizeof pair);
    pairs ^= pair;
  }
  DWORD sum = seed ^ static_cast<DWORD>(pairs) ^ static_cast<DWORD>(pairs >> 32);
  bytes += whole * sizeof pairs;
  length %= sizeof pairs;
  if (length >= 4) {
    DWORD word = 0;
    std::memcpy(&word, bytes, sizeof word);
    sum ^= word;
    bytes += 4;
    length -= 4;
  }
  DWORD rest = 0;
  while (length-- > 0) rest = rest << 8 | *bytes++;
  return sum ^ rest;
}

}  // namespace cabinet
