#include "rar/newblock.h"

#include <algorithm>

#include "frame/checksum.h"

namespace morvunp::rar {
namespace {

constexpr std::size_t kChecksumSize = 4;
/// What the size of a header takes at most, and how long one can be.
constexpr std::size_t kMostSizeBytes = 3;
constexpr ULONGLONG kLongestHeader = 2 << 20;

constexpr ULONGLONG kHasRecords = 0x01;
constexpr ULONGLONG kHasData = 0x02;
constexpr ULONGLONG kSplitBefore = 0x08;

}  // namespace

std::string_view Fields::Take(ULONGLONG length) {
  m_bCut = m_bCut || length > Left();
  const std::string_view taken = m_bytes.substr(0, std::min<ULONGLONG>(length, Left()));
  m_bytes.remove_prefix(taken.size());
  return taken;
}

std::string_view Fields::TakeLast(ULONGLONG length) const {
  return m_bytes.substr(Left() - std::min<ULONGLONG>(length, Left()));
}

ULONGLONG Fields::Number() {
  ULONGLONG number = 0;
  for (int shift = 0; shift < 64 && !m_bytes.empty(); shift += 7) {
    const auto byte = static_cast<BYTE>(Take(1).front());
    number |= ULONGLONG{byte & 0x7FU} << shift;
    if (byte < 0x80) return number;
  }
  m_bCut = true;
  return 0;
}

DWORD Fields::Number32() {
  DWORD number = 0;
  int shift = 0;
  for (const char byte : Take(4)) {
    number |= DWORD{static_cast<BYTE>(byte)} << shift;
    shift += 8;
  }
  return number;
}

DWORD NewBlock::HeaderSize(std::string_view bytes) {
  Fields fields(bytes.substr(kChecksumSize, kMostSizeBytes));
  const std::size_t before = fields.Left();
  const ULONGLONG size = fields.Number();
  if (size == 0 || size > kLongestHeader) return 0;
  return static_cast<DWORD>(kChecksumSize + (before - fields.Left()) + size);
}

std::optional<NewBlock> NewBlock::Decode(std::string_view header) {
  Fields fields(header);
  if (fields.Number32() != frame::Crc32(header.substr(kChecksumSize))) return std::nullopt;
  fields.Number();  // the size
  NewBlock block{fields.Number()};
  const ULONGLONG flags = fields.Number();
  if ((flags & kHasRecords) != 0) block.recordsSize = fields.Number();
  if ((flags & kHasData) != 0) block.dataSize = fields.Number();
  block.isContinuation = (flags & kSplitBefore) != 0;
  if (fields.IsCut()) return std::nullopt;
  block.rest = fields.Take(fields.Left());
  return block;
}

}  // namespace morvunp::rar
