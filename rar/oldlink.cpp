#include "rar/oldlink.h"

#include <climits>

namespace morvunp::rar {
namespace {

// The layout of blocks, by offsets from the start of one: a checksum of two
// bytes, then these. All numbers are little-endian.
constexpr std::size_t kTypeAt = 2;
constexpr std::size_t kFlagsAt = 3;
constexpr std::size_t kSizeAt = 5;
/// Bytes behind the header, where the flag says that there are some. Of a file
/// its packed data; the high half stands further behind where it is large.
constexpr std::size_t kDataSizeAt = 7;
constexpr std::size_t kHighDataSizeAt = 32;
constexpr std::size_t kMethodAt = 25;

constexpr BYTE kFileBlock = 0x74;
constexpr BYTE kEndBlock = 0x7B;
constexpr BYTE kStored = 0x30;
constexpr DWORD kHasData = 0x8000;
constexpr DWORD kIsLarge = 0x0100;
constexpr DWORD kIsSplitOrEncrypted = 0x0007;

constexpr std::string_view kSignature("Rar!\x1A\x07\0", 7);

class Block {
 public:
  static constexpr DWORD kLength = 36;

  explicit Block(std::string bytes) : m_bytes(std::move(bytes)) { m_bytes.resize(kLength); }

  BYTE Type() const { return static_cast<BYTE>(m_bytes[kTypeAt]); }
  DWORD Flags() const { return Number(kFlagsAt, 2); }
  DWORD HeaderSize() const { return Number(kSizeAt, 2); }
  ULONGLONG DataSize() const {
    if ((Flags() & kHasData) == 0 && Type() != kFileBlock) return 0;
    const bool isLarge = Type() == kFileBlock && (Flags() & kIsLarge) != 0;
    const ULONGLONG high = isLarge ? Number(kHighDataSizeAt, 4) : 0;
    return high << 32 | Number(kDataSizeAt, 4);
  }
  bool IsPlain() const {
    return static_cast<BYTE>(m_bytes[kMethodAt]) == kStored && (Flags() & kIsSplitOrEncrypted) == 0;
  }

 private:
  DWORD Number(std::size_t offset, std::size_t length) const {
    DWORD number = 0;
    while (length-- > 0) number = number << 8 | static_cast<BYTE>(m_bytes[offset + length]);
    return number;
  }

  std::string m_bytes;
};

/// CRC-32 as ISO 3309 has it; of a few bytes, so bit by bit.
DWORD ChecksumOf(std::string_view bytes) {
  DWORD sum = 0xFFFFFFFF;
  for (const char c : bytes) {
    sum ^= static_cast<BYTE>(c);
    for (int i = 0; i < 8; ++i) sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

}  // namespace

/// To the block of a file.
bool OldLinks::GoTo(ULONGLONG number) {
  if (m_nOffset == 0 || number < m_nFiles) {
    if (m_archive.Read(0, kSignature.size()) != kSignature) return false;
    m_nOffset = kSignature.size();
    m_nFiles = 0;
  }
  for (;;) {
    const Block block(m_archive.Read(m_nOffset, Block::kLength));
    if (block.HeaderSize() == 0 || block.Type() == kEndBlock) return false;
    const bool isFile = block.Type() == kFileBlock;
    if (isFile && m_nFiles == number) return true;
    const ULONGLONG next = m_nOffset + block.HeaderSize() + block.DataSize();
    if (next <= m_nOffset) return false;
    m_nOffset = next;
    if (isFile) ++m_nFiles;
  }
}

std::optional<std::wstring> OldLinks::TargetOf(ULONGLONG number, const Header& header) {
  if (header.unpackedSize == 0 || header.unpackedSize >= PATH_MAX) return std::nullopt;
  if (!GoTo(number)) return std::nullopt;
  const Block block(m_archive.Read(m_nOffset, Block::kLength));
  if (!block.IsPlain() || block.DataSize() != header.unpackedSize) return std::nullopt;
  const std::string text =
      m_archive.Read(m_nOffset + block.HeaderSize(), static_cast<DWORD>(block.DataSize()));
  if (ChecksumOf(text) != header.crc) return std::nullopt;
  return platform::ToLibraryPath(text);
}

}  // namespace morvunp::rar
