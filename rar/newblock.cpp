#include "rar/newblock.h"

#include "frame/checksum.h"
#include "frame/littleendian.h"

namespace morvunp::rar {
namespace {

constexpr std::size_t kChecksumSize = 4;
/// What the size of a header takes at most, and how long one can be.
constexpr std::size_t kMostSizeBytes = 3;
constexpr ULONGLONG kLongestHeader = 2 << 20;

constexpr ULONGLONG kHasExtra = 0x01;
constexpr ULONGLONG kHasData = 0x02;
constexpr ULONGLONG kSplitBefore = 0x08;

/// Takes numbers of seven bits a byte, the lowest first.
class Numbers {
 public:
  explicit Numbers(std::string_view bytes) : m_bytes(bytes) {}

  /// 0 where there is none, which HasFailed tells from then on.
  ULONGLONG Next() {
    ULONGLONG number = 0;
    for (int shift = 0; shift < 64 && m_nTaken < m_bytes.size(); shift += 7) {
      const auto byte = static_cast<BYTE>(m_bytes[m_nTaken++]);
      number |= ULONGLONG{byte & 0x7FU} << shift;
      if (byte < 0x80) return number;
    }
    m_bFailed = true;
    return 0;
  }
  bool HasFailed() const { return m_bFailed; }
  std::size_t Taken() const { return m_nTaken; }

 private:
  std::string_view m_bytes;
  std::size_t m_nTaken = 0;
  bool m_bFailed = false;
};

DWORD ChecksumOf(std::string_view header) {
  return frame::GetLittleEndian32Bit(reinterpret_cast<const BYTE*>(header.data()));
}

}  // namespace

DWORD NewBlock::HeaderSize(std::string_view bytes) {
  Numbers numbers(bytes.substr(kChecksumSize, kMostSizeBytes));
  const ULONGLONG size = numbers.Next();
  if (size == 0 || size > kLongestHeader) return 0;
  return static_cast<DWORD>(kChecksumSize + numbers.Taken() + size);
}

std::optional<NewBlock> NewBlock::Decode(std::string_view header) {
  const std::string_view summed = header.substr(kChecksumSize);
  if (frame::Crc32(summed) != ChecksumOf(header)) return std::nullopt;
  Numbers numbers(summed);
  numbers.Next();  // the size
  NewBlock block{numbers.Next()};
  const ULONGLONG flags = numbers.Next();
  if ((flags & kHasExtra) != 0) numbers.Next();
  if ((flags & kHasData) != 0) block.dataSize = numbers.Next();
  block.isContinuation = (flags & kSplitBefore) != 0;
  if (numbers.HasFailed()) return std::nullopt;
  return block;
}

}  // namespace morvunp::rar
