#include "sevenzip/startheader.h"

#include <array>
#include <limits>
#include <string_view>

#include "frame/checksum.h"
#include "frame/littleendian.h"

namespace morvunp::sevenzip {
namespace {

constexpr std::string_view kSignature("7z\xBC\xAF\x27\x1C");

// The format's own description: signature, version, checksum of what follows,
// then where the headers are, counted from behind these bytes.
constexpr std::size_t kLength = 32;
constexpr std::size_t kChecksumAt = 8;
constexpr std::size_t kSummedAt = 12;
constexpr std::size_t kOffsetAt = 12;
constexpr std::size_t kSizeAt = 20;

using StartHeader = std::array<BYTE, kLength>;

/// Number of bytes that there are.
std::size_t Read(IInStream& stream, StartHeader& header) {
  std::size_t length = 0;
  DWORD read = 0;
  if (stream.Seek(0, kSeekStart, nullptr) != S_OK) return 0;
  do {
    const auto left = static_cast<DWORD>(header.size() - length);
    if (stream.Read(header.data() + length, left, &read) != S_OK) return 0;
    length += read;
  } while (read != 0 && length < header.size());
  return length;
}

bool IsIntact(std::string_view header) {
  return frame::Crc32(header.substr(kSummedAt)) ==
         frame::GetLittleEndian32Bit(reinterpret_cast<const BYTE*>(header.data()) + kChecksumAt);
}

}  // namespace

std::optional<ULONGLONG> LengthOfArchive(IInStream& stream) {
  constexpr ULONGLONG kMost = std::numeric_limits<ULONGLONG>::max();
  StartHeader bytes{};
  const std::string_view header(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const bool isWhole = Read(stream, bytes) == kLength;
  if (!isWhole || !header.starts_with(kSignature) || !IsIntact(header)) return std::nullopt;
  const ULONGLONG offset = frame::GetLittleEndian64Bit(bytes.data() + kOffsetAt);
  const ULONGLONG size = frame::GetLittleEndian64Bit(bytes.data() + kSizeAt);
  if (offset > kMost - kLength || size > kMost - kLength - offset) return kMost;
  return kLength + offset + size;
}

bool EndsBeforeArchive(IInStream& stream) {
  ULONGLONG end = 0;
  if (const auto length = LengthOfArchive(stream)) {
    return stream.Seek(0, kSeekEnd, &end) == S_OK && end < *length;
  }
  StartHeader bytes{};
  const std::size_t length = Read(stream, bytes);
  const std::string_view header(reinterpret_cast<const char*>(bytes.data()), length);
  return length < kLength && header.starts_with(kSignature);
}

}  // namespace morvunp::sevenzip
