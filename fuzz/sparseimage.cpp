#include "fuzz/sparseimage.h"

#include <algorithm>

#include "fuzz/input.h"

namespace fuzz {
namespace {

constexpr std::size_t kBlock = 512;
/// 4 MiB.
constexpr std::size_t kMostBlocks = 8192;
/// Images are made of whole sectors.
constexpr std::size_t kSector = 2048;

unsigned ByteOf(char c) { return static_cast<std::uint8_t>(c); }

bool LooksLikeTag(const char* bytes) {
  const unsigned id = ByteOf(bytes[0]) | ByteOf(bytes[1]) << 8;
  const bool isKnown = (id >= 1 && id <= 9) || (id >= 256 && id <= 266);
  return isKnown && (bytes[2] == 2 || bytes[2] == 3) && bytes[3] == 0;
}

void FixTags(std::string& piece) {
  constexpr std::size_t kTagSize = 16;
  constexpr std::size_t kSum = 4;
  for (std::size_t at = 0; at + kTagSize <= piece.size(); at += 4) {
    char* const tag = piece.data() + at;
    if (!LooksLikeTag(tag)) continue;
    unsigned sum = 0;
    for (std::size_t i = 0; i < kTagSize; ++i) sum += i == kSum ? 0 : ByteOf(tag[i]);
    tag[kSum] = static_cast<char>(sum);
  }
}

}  // namespace

std::string ExpandImage(std::string_view pieces, Sums sums) {
  std::string image;
  for (Input input(pieces); !input.IsEmpty();) {
    const std::size_t start = input.Number(2) % kMostBlocks * kBlock;
    std::string piece(input.Counted());
    if (sums == Sums::kPutRight) FixTags(piece);
    const std::size_t end = (start + piece.size() + kSector - 1) / kSector * kSector;
    if (image.size() < end) image.resize(end);
    image.replace(start, piece.size(), piece);
  }
  return image;
}

std::string CompactImage(std::string_view image) {
  std::string pieces;
  for (std::size_t block = 0; block * kBlock < image.size(); ++block) {
    const std::string_view bytes = image.substr(block * kBlock, kBlock);
    const std::size_t last = bytes.find_last_not_of(bytes.back());
    if (last == bytes.npos) continue;
    pieces += NumberBytes(block, 2) + CountedBytes(bytes.substr(0, last + 1));
  }
  return pieces;
}

}  // namespace fuzz
