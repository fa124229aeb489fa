// Writes LZX streams for cabinets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

enum class LzxBlocks { kVerbatim, kAligned, kUncompressed };

struct LzxSettings {
  unsigned windowBits = 16;
  LzxBlocks blocks = LzxBlocks::kVerbatim;
  /// Bytes that a block of the stream unpacks to; blocks may cross frames.
  std::size_t blockSize = 50'001;
  /// What the targets of x86 calls count up to; 0 leaves calls as they are.
  std::int32_t translationSize = 0;
};

/// One packed frame for each 32 KiB of `data`.
std::vector<std::string> WriteLzx(std::string_view data, const LzxSettings& settings);

}  // namespace testsupport
