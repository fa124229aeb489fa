#include "rar/owners.h"

#include <algorithm>
#include <string_view>

namespace morvunp::rar {
namespace {

// The layout of blocks: a checksum of four bytes, the size of what follows of
// the header, and the header. Numbers are little-endian, mostly of seven bits a
// byte with the eighth set where there is more.
constexpr std::string_view kSignature("Rar!\x1A\x07\x01\0", 8);
constexpr std::size_t kChecksum = 4;
/// Of the size in a header, in bytes.
constexpr std::size_t kLongestSize = 3;

constexpr ULONGLONG kFileBlock = 2;
constexpr ULONGLONG kEncryptionBlock = 4;
constexpr ULONGLONG kEndBlock = 5;
constexpr ULONGLONG kHasExtra = 1;
constexpr ULONGLONG kHasData = 2;
constexpr ULONGLONG kHasTime = 2;
constexpr ULONGLONG kHasCrc = 4;

constexpr ULONGLONG kOwnerRecord = 6;
constexpr ULONGLONG kHasUserName = 1;
constexpr ULONGLONG kHasGroupName = 2;
constexpr ULONGLONG kHasUser = 4;
constexpr ULONGLONG kHasGroup = 8;

/// Takes numbers and texts from the front of some bytes; zeros and nothing
/// behind their end.
class Fields {
 public:
  explicit Fields(std::string_view bytes) : m_bytes(bytes) {}

  bool IsAtEnd() const { return m_bytes.empty(); }
  /// More was taken than there was.
  bool IsCut() const { return m_bCut; }
  std::size_t Left() const { return m_bytes.size(); }
  std::string_view Take(ULONGLONG length) {
    m_bCut = m_bCut || length > Left();
    const std::string_view taken = m_bytes.substr(0, std::min<ULONGLONG>(length, Left()));
    m_bytes.remove_prefix(taken.size());
    return taken;
  }
  std::string_view TakeLast(ULONGLONG length) const {
    return m_bytes.substr(Left() - std::min<ULONGLONG>(length, Left()));
  }
  ULONGLONG Number() {
    ULONGLONG number = 0;
    m_bCut = m_bCut || m_bytes.empty();
    for (int shift = 0; shift < 64 && !m_bytes.empty(); shift += 7) {
      const auto byte = static_cast<BYTE>(Take(1).front());
      number |= ULONGLONG{byte & 0x7FU} << shift;
      if ((byte & 0x80) == 0) break;
    }
    return number;
  }
  DWORD Number32() {
    DWORD number = 0;
    int shift = 0;
    for (const char byte : Take(4)) {
      number |= DWORD{static_cast<BYTE>(byte)} << shift;
      shift += 8;
    }
    return number;
  }

 private:
  std::string_view m_bytes;
  bool m_bCut = false;
};

struct Block {
  std::string bytes;
  ULONGLONG type = 0;
  ULONGLONG extraSize = 0;
  /// What is behind the fields that all blocks have.
  std::string_view rest;
  /// Offset of the next one; 0: there is none.
  ULONGLONG next = 0;
};

/// A block of the type 0 and without a next one where there is none.
void ReadBlock(const ArchiveBytes& archive, ULONGLONG offset, Block& block) {
  const std::string start = archive.Read(offset, kChecksum + kLongestSize);
  Fields size(start);
  size.Take(kChecksum);
  const ULONGLONG length = size.Number();
  const ULONGLONG header = offset + start.size() - size.Left();
  const bool isSized = start.size() == kChecksum + kLongestSize && length > 0 && length < 1U << 21;
  block.bytes = isSized ? archive.Read(header, static_cast<DWORD>(length)) : std::string();
  Fields fields(block.bytes);
  block.type = fields.Number();
  const ULONGLONG flags = fields.Number();
  block.extraSize = (flags & kHasExtra) != 0 ? fields.Number() : 0;
  const ULONGLONG data = (flags & kHasData) != 0 ? fields.Number() : 0;
  block.rest = fields.Take(fields.Left());
  const ULONGLONG next = header + length + data;
  const bool isWhole = isSized && block.bytes.size() == length && next > offset && next >= data;
  block.next = isWhole ? next : 0;
}

/// What the header of a file says is what the engine told of it.
bool IsOf(std::string_view file, const Header& header) {
  Fields fields(file);
  const ULONGLONG flags = fields.Number();
  if (fields.Number() != header.unpackedSize) return false;
  fields.Number();
  if ((flags & kHasTime) != 0) fields.Number32();
  return (flags & kHasCrc) == 0 || fields.Number32() == header.crc;
}

/// A name that this system knows counts more than a number of another's.
std::optional<platform::FileOwner> OwnerIn(Fields record) {
  const ULONGLONG flags = record.Number();
  platform::FileOwner owner;
  if ((flags & kHasUserName) != 0) {
    owner.user = platform::UserOfName(std::string(record.Take(record.Number())));
  }
  if ((flags & kHasGroupName) != 0) {
    owner.group = platform::GroupOfName(std::string(record.Take(record.Number())));
  }
  const auto orNumber = [&](std::optional<DWORD>& named) {
    const ULONGLONG number = record.Number();
    // The largest is nobody's, and what is larger would be another's.
    if (!named && number < 0xFFFFFFFF) named = static_cast<DWORD>(number);
  };
  if ((flags & kHasUser) != 0) orNumber(owner.user);
  if ((flags & kHasGroup) != 0) orNumber(owner.group);
  return record.IsCut() ? std::nullopt : std::optional(owner);
}

}  // namespace

/// To the block of an item.
bool Owners::GoTo(ULONGLONG number) {
  if (m_nOffset == 0 || number < m_nItems) {
    if (m_archive.Read(0, kSignature.size()) != kSignature) return false;
    m_nOffset = kSignature.size();
    m_nItems = 0;
  }
  for (Block block;;) {
    ReadBlock(m_archive, m_nOffset, block);
    if (block.next == 0 || block.type == kEncryptionBlock || block.type == kEndBlock) return false;
    const bool isFile = block.type == kFileBlock;
    if (isFile && m_nItems == number) return true;
    m_nOffset = block.next;
    if (isFile) ++m_nItems;
  }
}

std::optional<platform::FileOwner> Owners::OwnerOf(ULONGLONG number, const Header& header) {
  if (!GoTo(number)) return std::nullopt;
  Block block;
  ReadBlock(m_archive, m_nOffset, block);
  if (!IsOf(block.rest, header)) return std::nullopt;
  for (Fields extra(Fields(block.rest).TakeLast(block.extraSize)); !extra.IsAtEnd();) {
    Fields record(extra.Take(extra.Number()));
    if (record.Number() == kOwnerRecord) return OwnerIn(record);
  }
  return std::nullopt;
}

}  // namespace morvunp::rar
