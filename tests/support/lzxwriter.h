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
  /// The kinds that blocks of the stream have in turn.
  std::vector<LzxBlocks> blocks{LzxBlocks::kVerbatim};
  /// Bytes that a block of the stream unpacks to; blocks may cross frames.
  std::size_t blockSize = 50'001;
  /// What the targets of x86 calls count up to; 0 leaves calls as they are.
  std::int32_t translationSize = 0;
  /// Codes of up to the longest that there can be, rather than good ones.
  bool hasLongCodes = false;
};

/// One packed frame for each 32 KiB of `data`.
std::vector<std::string> WriteLzx(std::string data, const LzxSettings& settings);

}  // namespace testsupport
