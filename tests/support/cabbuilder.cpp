#include "support/cabbuilder.h"

#include <zlib.h>

#include <algorithm>
#include <stdexcept>

#include "support/bytes.h"

namespace testsupport {
namespace {

constexpr std::size_t kBlockSize = 32768;

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

std::string DataOf(const CabFolder& folder) {
  std::string data;
  for (const CabFile& file : folder.files) data += file.data;
  return data;
}

std::uint16_t MethodOf(const CabFolder& folder) {
  const auto method = static_cast<unsigned>(folder.method);
  const bool isLzx = folder.method == CabMethod::kLzx;
  return static_cast<std::uint16_t>(isLzx ? method | folder.lzx.windowBits << 8 : method);
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

}  // namespace

std::vector<CabBlock> CabBuilder::Pack(const CabFolder& folder) {
  const std::string data = DataOf(folder);
  const auto frames =
      folder.method == CabMethod::kLzx ? WriteLzx(data, folder.lzx) : std::vector<std::string>();
  std::vector<CabBlock> blocks;
  for (std::size_t at = 0; at < data.size(); at += kBlockSize) {
    const std::string_view block = std::string_view(data).substr(at, kBlockSize);
    const std::size_t before = std::min(at, kBlockSize);
    const std::string_view history = std::string_view(data).substr(at - before, before);
    std::string packed(block);
    if (folder.method == CabMethod::kMszip) packed = "CK" + Deflate(history, block);
    if (folder.method == CabMethod::kLzx) packed = frames.at(at / kBlockSize);
    blocks.push_back({packed, block.size()});
  }
  return blocks;
}

std::string CabBuilder::BlockBytes(const CabBlock& block) const {
  const std::string sizes = Little(block.packed.size(), 2) + Little(block.size, 2);
  const std::string reserve(blockReserve, 'r');
  const std::uint32_t sum = Sum(sizes + (sumsReserve ? reserve : ""), Sum(block.packed, 0));
  return Little(hasChecksums ? sum : 0, 4) + sizes + reserve + block.packed;
}

std::string CabBuilder::Assemble(const std::vector<Part>& parts, const std::vector<Entry>& entries,
                                 std::uint16_t flags, std::uint16_t index,
                                 const std::string& neighbours) const {
  std::string reserves;
  if (headerReserve + folderReserve + blockReserve != 0) {
    flags |= 4;
    reserves = Little(headerReserve, 2) + Little(folderReserve, 1) + Little(blockReserve, 1) +
               std::string(headerReserve, 'R');
  }
  std::string table;
  for (const auto& [file, offset, folder] : entries) {
    table += Little(file->data.size(), 4) + Little(offset, 4) + Little(folder, 2) +
             Little(file->date, 2) + Little(file->time, 2) + Little(file->attribs, 2) + file->name +
             '\0';
  }
  const std::size_t filesAt =
      36 + reserves.size() + neighbours.size() + parts.size() * (8U + folderReserve);
  std::string folderBytes;
  std::string data;
  for (const Part& part : parts) {
    folderBytes += Little(filesAt + table.size() + data.size(), 4) + Little(part.blocks.size(), 2) +
                   Little(part.method, 2) + std::string(folderReserve, 'f');
    for (const CabBlock& block : part.blocks) data += BlockBytes(block);
  }
  return "MSCF" + Little(0, 4) + Little(filesAt + table.size() + data.size(), 4) + Little(0, 4) +
         Little(filesAt, 4) + Little(0, 4) + "\x03\x01" + Little(parts.size(), 2) +
         Little(entries.size(), 2) + Little(flags, 2) + Little(setId, 2) + Little(index, 2) +
         reserves + neighbours + folderBytes + table + data;
}

std::string CabBuilder::Build() const {
  std::vector<Part> parts;
  std::vector<Entry> entries;
  for (const CabFolder& folder : folders) {
    std::size_t offset = 0;
    for (const CabFile& file : folder.files) {
      entries.push_back({&file, offset, static_cast<std::uint16_t>(parts.size())});
      offset += file.data.size();
    }
    parts.push_back({MethodOf(folder), Pack(folder)});
  }
  return Assemble(parts, entries, 0, 0, {});
}

std::vector<std::string> CabBuilder::BuildSet(std::size_t packedBytes,
                                              const std::vector<std::string>& names) const {
  const CabFolder& folder = folders.at(0);
  std::vector<Part> parts(1, {MethodOf(folder), {}});
  // The cabinets in which each block begins and ends.
  std::vector<std::pair<std::size_t, std::size_t>> places;
  std::size_t room = packedBytes;
  for (CabBlock block : Pack(folder)) {
    const std::size_t first = parts.size() - 1;
    while (block.packed.size() > room) {
      parts.back().blocks.push_back({block.packed.substr(0, room), 0});
      block.packed.erase(0, room);
      parts.push_back({MethodOf(folder), {}});
      room = packedBytes;
    }
    room -= block.packed.size();
    parts.back().blocks.push_back(block);
    places.emplace_back(first, parts.size() - 1);
  }
  if (parts.size() > names.size()) throw std::logic_error("more cabinets than names");

  std::vector<std::string> cabinets;
  for (std::size_t k = 0; k < parts.size(); ++k) {
    std::vector<Entry> entries;
    std::size_t offset = 0;
    for (const CabFile& file : folder.files) {
      const std::size_t first = places.at(offset / kBlockSize).first;
      const std::size_t last = places.at((offset + file.data.size() - 1) / kBlockSize).second;
      const unsigned here = (first < k ? 1U : 0U) | (last > k ? 2U : 0U);
      const std::uint16_t index = here == 0 ? 0 : static_cast<std::uint16_t>(0xFFFC + here);
      if (first <= k && last >= k) entries.push_back({&file, offset, index});
      offset += file.data.size();
    }
    std::string neighbours;
    if (k > 0) neighbours += names[k - 1] + '\0' + "disk" + '\0';
    if (k + 1 < parts.size()) neighbours += names[k + 1] + '\0' + "disk" + '\0';
    const unsigned flags = (k > 0 ? 1U : 0U) | (k + 1 < parts.size() ? 2U : 0U);
    cabinets.push_back(Assemble({parts[k]}, entries, static_cast<std::uint16_t>(flags),
                                static_cast<std::uint16_t>(k), neighbours));
  }
  return cabinets;
}

}  // namespace testsupport
