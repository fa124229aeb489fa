// Where image bytes come from: one positioned read, so that the decoders can
// be handed files, memory or damaged sources alike.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "morvunp/platform/platform.h"

namespace morvunp::iso {

/// Sectors of the volume recognition sequence, whatever the image's own size.
inline constexpr std::uint32_t kSectorSize = 2048;

class ByteSource {
 public:
  virtual ~ByteSource() = default;

  /// Reads up to `length` bytes at `offset`. The number read, short only at
  /// the end of the source; -1 on an error.
  virtual std::int64_t ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) = 0;
  /// Size in bytes; nothing can be read beyond it.
  virtual std::uint64_t Size() const = 0;
};

/// An open file by its C runtime descriptor, which it does not own.
class DescriptorSource : public ByteSource {
 public:
  /// Reads fail as soon as `mayGoOn`, where there is one, is false.
  explicit DescriptorSource(int descriptor, std::function<bool()> mayGoOn = {});

  std::int64_t ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) override;
  std::uint64_t Size() const override { return m_nSize; }

 private:
  HANDLE m_hFile;
  std::uint64_t m_nSize;
  std::function<bool()> m_mayGoOn;
};

/// How much of an extent lies inside the source.
std::uint32_t AvailableLength(const ByteSource& source, std::uint64_t offset, std::uint32_t length);

/// Reads an extent whole; fewer bytes than `length` at the end of the source
/// and none on an error. Never allocates more than the source holds.
std::vector<BYTE> ReadWhole(ByteSource& source, std::uint64_t offset, std::uint32_t length);

/// Calls `visit` with every 2048-byte sector from `offset` on, until it returns
/// false or a sector cannot be read whole. Reads many sectors at a time.
void ForEachSector(ByteSource& source, std::uint64_t offset,
                   const std::function<bool(std::span<const BYTE>)>& visit);

}  // namespace morvunp::iso
