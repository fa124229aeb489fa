// Cabinets, built byte by byte, whole or wrong.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/lzxwriter.h"

namespace testsupport {

struct CabFile {
  std::string name;
  std::string data;
  std::uint16_t attribs = 0x20;
  /// 2001-02-03 04:05:06.
  std::uint16_t date = 0x2A43;
  std::uint16_t time = 0x20A3;
};

enum class CabMethod { kStored = 0, kMszip = 1, kLzx = 3 };

struct CabFolder {
  CabMethod method = CabMethod::kStored;
  std::vector<CabFile> files;
  LzxSettings lzx{};
};

class CabBuilder {
 public:
  std::vector<CabFolder> folders;
  std::uint16_t headerReserve = 0;
  std::uint8_t folderReserve = 0;
  std::uint8_t blockReserve = 0;
  /// The checksum covers the bytes set apart in a block.
  bool sumsReserve = true;
  bool hasChecksums = true;
  /// Unpacked bytes of a block; LZX needs 32768.
  std::size_t blockSize = 32768;

  CabBuilder& Add(CabMethod method, std::vector<CabFile> files, const LzxSettings& lzx = {}) {
    folders.push_back({method, std::move(files), lzx});
    return *this;
  }

  /// One cabinet of all folders.
  std::string Build() const;
  /// The first folder spread over cabinets of at most `packedBytes` of data
  /// each, blocks cut where they do not fit. Cabinet k is named `names[k]`.
  std::vector<std::string> BuildSet(std::size_t packedBytes,
                                    const std::vector<std::string>& names) const;
};

}  // namespace testsupport
