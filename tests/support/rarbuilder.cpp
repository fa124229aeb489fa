#include "support/rarbuilder.h"

#include <zlib.h>

#include <string_view>

#include "support/bytes.h"

namespace testsupport {
namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t kModified = 981173106;      // 2001-02-03 04:05:06 UTC
constexpr std::uint32_t kDosModified = 0x2A4320A3;  // the same, local
constexpr unsigned kHasExtra = 1;
constexpr unsigned kHasData = 2;

std::uint32_t Crc32(const std::string& bytes) {
  return static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

/// Seven bits a byte, the lowest first.
std::string Number(std::uint64_t value) {
  std::string bytes;
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>(value | 0x80);
  return bytes + static_cast<char>(value);
}

std::string Sized(const std::string& bytes) { return Number(bytes.size()) + bytes; }

std::string Block(const std::string& header) {
  const std::string sized = Sized(header);
  return Little(Crc32(sized), 4) + sized;
}

std::string Rar4Block(const std::string& header) {
  return Little(Crc32(header) & 0xFFFF, 2) + header;
}

}  // namespace

std::string RarBuilder::Rar5Header(const RarItem& item) {
  std::string extra;
  if (item.redirection != 0) {
    extra = Sized(Number(5) + Number(item.redirection) + Number(0) + Sized(item.redirectsTo));
  }
  if (!item.record.empty()) extra += Sized(item.record);
  const unsigned flags = (extra.empty() ? 0 : kHasExtra) | (item.data.empty() ? 0 : kHasData);
  std::string header = Number(item.isService ? 3 : 2) + Number(flags);
  if (!extra.empty()) header += Number(extra.size());
  if (!item.data.empty()) header += Number(item.data.size());
  header += Number(item.isFolder ? 1 | 2 : 2 | 4) + Number(item.data.size()) + Number(item.mode) +
            Little(kModified, 4);
  if (!item.isFolder) header += Little(Crc32(item.data), 4);
  return Block(header + Number(0) + Number(item.fromWindows ? 0 : 1) + Sized(item.path) + extra);
}

std::string RarBuilder::Build(unsigned archiveFlags) const {
  return std::string("Rar!\x1a\x07\x01\x00"sv) +
         Block(Number(1) + Number(0) + Number(archiveFlags)) + items_ +
         Block(Number(5) + Number(0) + Number(0));
}

std::string BuildRar4(const RarItem& item) {
  const auto size = static_cast<std::uint32_t>(item.data.size());
  const auto nameLength = static_cast<std::uint32_t>(item.path.size());
  const std::string header = "\x74" + Little(0x8000, 2) + Little(32 + nameLength, 2) +
                             Little(size, 4) + Little(size, 4) + "\x03" +
                             Little(Crc32(item.data), 4) + Little(kDosModified, 4) + "\x14" +
                             "\x30" + Little(nameLength, 2) + Little(item.mode, 4) + item.path;
  return std::string("Rar!\x1a\x07\x00"sv) +
         Rar4Block("\x73" + Little(0, 2) + Little(13, 2) + Little(0, 6)) + Rar4Block(header) +
         item.data + Rar4Block("\x7b" + Little(0x4000, 2) + Little(7, 2));
}

}  // namespace testsupport
