#include "support/cabbuilder.h"

#include <zlib.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "support/bytes.h"

namespace testsupport {
namespace {

constexpr std::size_t kBlockSize = 32768;
constexpr unsigned kSetId = 77;

/// Deflates with the 32 KiB in front of a block as its history.
std::string Deflate(std::string_view history, std::string_view data) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
  const auto bytes = [](std::string_view text) {
    return const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text.data()));
  };
  deflateSetDictionary(&stream, bytes(history), static_cast<uInt>(history.size()));
  std::string packed(deflateBound(&stream, data.size()), '\0');
  stream.next_in = bytes(data);
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = bytes(packed);
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

/// A packed block and the bytes it unpacks to.
struct Block {
  std::string packed;
  std::size_t size;
};

std::vector<Block> Pack(const CabFolder& folder, std::size_t blockSize) {
  std::string data;
  for (const CabFile& file : folder.files) data += file.data;
  std::vector<std::string> frames;
  if (folder.method == CabMethod::kLzx) frames = WriteLzx(data, folder.lzx);
  std::vector<Block> blocks;
  for (std::size_t at = 0; at < data.size(); at += blockSize) {
    std::string block = data.substr(at, blockSize);
    const std::size_t size = block.size();
    const std::size_t before = std::min(at, kBlockSize);
    if (folder.method == CabMethod::kMszip) {
      block = "CK" + Deflate(std::string_view(data).substr(at - before, before), block);
    } else if (folder.method == CabMethod::kLzx) {
      block = frames.at(at / blockSize);
    }
    blocks.push_back({std::move(block), size});
  }
  return blocks;
}

/// [MS-CAB] 3.1, byte by byte.
std::uint32_t Sum(std::string_view bytes, std::uint32_t sum) {
  for (; bytes.size() >= 4; bytes.remove_prefix(4)) {
    for (unsigned i = 0; i < 4; ++i) {
      sum ^= std::uint32_t{static_cast<std::uint8_t>(bytes[i])} << 8 * i;
    }
  }
  std::uint32_t rest = 0;
  for (const char c : bytes) rest = rest << 8 | static_cast<std::uint8_t>(c);
  return sum ^ rest;
}

std::string BytesOf(const Block& block, const CabBuilder& builder) {
  const std::string sizes = Little(block.packed.size(), 2) + Little(block.size, 2);
  const std::string reserve(builder.blockReserve, 'r');
  const std::uint32_t sum = Sum(sizes + (builder.sumsReserve ? reserve : ""), Sum(block.packed, 0));
  return Little(builder.hasChecksums ? sum : 0, 4) + sizes + reserve + block.packed;
}

/// What a cabinet has of a folder.
struct Part {
  explicit Part(const CabFolder& folder) : method(static_cast<unsigned>(folder.method)) {
    if (folder.method == CabMethod::kLzx) method |= folder.lzx.windowBits << 8;
  }

  unsigned method;
  std::vector<Block> blocks;
};

struct Entry {
  const CabFile* file;
  std::size_t offset;
  std::size_t folder;
};

std::string Assemble(const CabBuilder& builder, const std::vector<Part>& parts,
                     const std::vector<Entry>& entries, unsigned flags = 0, std::size_t index = 0,
                     const std::string& neighbours = {}) {
  std::string before;
  const std::string folderReserve(builder.folderReserve, 'f');
  if (builder.headerReserve + builder.folderReserve + builder.blockReserve != 0) {
    flags |= 4;
    before = Little(builder.headerReserve, 2) + Little(builder.folderReserve, 1) +
             Little(builder.blockReserve, 1) + std::string(builder.headerReserve, 'R');
  }
  before += neighbours;
  std::string table;
  for (const auto& [file, offset, folder] : entries) {
    table += Little(file->data.size(), 4) + Little(offset, 4) + Little(folder, 2) +
             Little(file->date, 2) + Little(file->time, 2) + Little(file->attribs, 2) + file->name +
             '\0';
  }
  const std::size_t filesAt = 36 + before.size() + parts.size() * (8 + folderReserve.size());
  const std::size_t dataAt = filesAt + table.size();
  std::string data;
  for (const Part& part : parts) {
    before += Little(dataAt + data.size(), 4) + Little(part.blocks.size(), 2) +
              Little(part.method, 2) + folderReserve;
    for (const Block& block : part.blocks) data += BytesOf(block, builder);
  }
  return "MSCF" + Little(0, 4) + Little(dataAt + data.size(), 4) + Little(0, 4) +
         Little(filesAt, 4) + Little(0, 4) + "\x03\x01" + Little(parts.size(), 2) +
         Little(entries.size(), 2) + Little(flags, 2) + Little(kSetId, 2) + Little(index, 2) +
         before + table + data;
}

}  // namespace

std::string CabBuilder::Build() const {
  std::vector<Part> parts;
  std::vector<Entry> entries;
  for (const CabFolder& folder : folders) {
    std::size_t offset = 0;
    for (const CabFile& file : folder.files) {
      entries.push_back({&file, offset, parts.size()});
      offset += file.data.size();
    }
    parts.emplace_back(folder).blocks = Pack(folder, blockSize);
  }
  return Assemble(*this, parts, entries);
}

std::vector<std::string> CabBuilder::BuildSet(std::size_t packedBytes,
                                              const std::vector<std::string>& names) const {
  const CabFolder& folder = folders.at(0);
  const std::vector<Block> blocks = Pack(folder, blockSize);
  // Where each block begins among all packed bytes, and where the last one ends.
  std::vector<std::size_t> starts{0};
  for (const Block& block : blocks) starts.push_back(starts.back() + block.packed.size());
  const std::size_t count = (starts.back() - 1) / packedBytes + 1;

  std::vector<std::string> cabinets;
  for (std::size_t k = 0; k < count; ++k) {
    Part part(folder);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      const std::size_t from = std::max(starts[i], k * packedBytes);
      const std::size_t end = std::min(starts[i + 1], (k + 1) * packedBytes);
      if (from >= end) continue;
      const bool isCut = end != starts[i + 1];
      const std::string piece = blocks[i].packed.substr(from - starts[i], end - from);
      part.blocks.push_back({piece, isCut ? 0 : blocks[i].size});
    }
    std::vector<Entry> entries;
    std::size_t offset = 0;
    for (const CabFile& file : folder.files) {
      const std::size_t first = starts.at(offset / blockSize) / packedBytes;
      offset += file.data.size();
      const std::size_t last = (starts.at((offset - 1) / blockSize + 1) - 1) / packedBytes;
      const unsigned beyond = (first < k ? 1U : 0U) | (last > k ? 2U : 0U);
      if (first > k || last < k) continue;
      entries.push_back({&file, offset - file.data.size(), beyond == 0 ? 0 : 0xFFFC + beyond});
    }
    std::string neighbours;
    if (k > 0) neighbours += names.at(k - 1) + '\0' + "disk" + '\0';
    if (k + 1 < count) neighbours += names.at(k + 1) + '\0' + "disk" + '\0';
    const unsigned flags = (k > 0 ? 1U : 0U) | (k + 1 < count ? 2U : 0U);
    cabinets.push_back(Assemble(*this, {part}, entries, flags, k, neighbours));
  }
  return cabinets;
}

}  // namespace testsupport
