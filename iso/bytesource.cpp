#include "iso/bytesource.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace morvunp::iso {
namespace {

// The first reads stay small: most images are recognised in a few sectors.
constexpr std::uint32_t kFirstSectors = 8;
constexpr std::uint32_t kMostSectors = 512;

std::uint64_t SizeOf(int descriptor) {
  const std::int64_t size = _lseeki64(descriptor, 0, SEEK_END);
  return size > 0 ? static_cast<std::uint64_t>(size) : 0;
}

}  // namespace

DescriptorSource::DescriptorSource(int descriptor, std::function<bool()> mayGoOn)
    : m_hFile(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor))),
      m_nSize(SizeOf(descriptor)),
      m_mayGoOn(std::move(mayGoOn)) {}

std::int64_t DescriptorSource::ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) {
  if (m_mayGoOn && !m_mayGoOn()) return -1;
  auto* bytes = static_cast<BYTE*>(buffer);
  std::uint32_t total = 0;
  while (total < length && offset + total < m_nSize) {
    OVERLAPPED position;
    position.Offset = static_cast<DWORD>(offset + total);
    position.OffsetHigh = static_cast<DWORD>((offset + total) >> 32);
    DWORD read = 0;
    if (ReadFile(m_hFile, bytes + total, length - total, &read, &position) == FALSE) return -1;
    if (read == 0) break;
    total += read;
  }
  return total;
}

std::uint32_t AvailableLength(const ByteSource& source, std::uint64_t offset,
                              std::uint32_t length) {
  const std::uint64_t available = offset < source.Size() ? source.Size() - offset : 0;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(length, available));
}

std::vector<BYTE> ReadWhole(ByteSource& source, std::uint64_t offset, std::uint32_t length) {
  std::vector<BYTE> bytes(AvailableLength(source, offset, length));
  const std::int64_t read =
      source.ReadAt(offset, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  bytes.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
  return bytes;
}

void ForEachSector(ByteSource& source, std::uint64_t offset,
                   const std::function<bool(std::span<const BYTE>)>& visit) {
  std::vector<BYTE> buffer;
  for (std::uint32_t sectors = kFirstSectors;; sectors = std::min(sectors * 2, kMostSectors)) {
    buffer.resize(std::size_t{sectors} * kSectorSize);
    const auto length = static_cast<std::uint32_t>(buffer.size());
    const std::int64_t read = source.ReadAt(offset, buffer.data(), length);
    for (std::int64_t at = 0; at + kSectorSize <= read; at += kSectorSize) {
      if (!visit({buffer.data() + at, kSectorSize})) return;
    }
    if (read < length) return;
    offset += length;
  }
}

}  // namespace morvunp::iso
