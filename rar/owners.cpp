#include "rar/owners.h"

#include <string_view>

#include "rar/newblock.h"

namespace morvunp::rar {
namespace {

// Of a file's header.
constexpr ULONGLONG kHasTime = 2;
constexpr ULONGLONG kHasCrc = 4;

constexpr ULONGLONG kOwnerRecord = 6;
constexpr ULONGLONG kHasUserName = 1;
constexpr ULONGLONG kHasGroupName = 2;
constexpr ULONGLONG kHasUser = 4;
constexpr ULONGLONG kHasGroup = 8;

/// The header of a block; empty where there is no whole one.
std::string HeaderAt(const ArchiveBytes& archive, ULONGLONG offset) {
  const std::string start = archive.Read(offset, NewBlock::kShortest);
  const DWORD size = start.size() == NewBlock::kShortest ? NewBlock::HeaderSize(start) : 0;
  std::string header = size != 0 ? archive.Read(offset, size) : std::string();
  return header.size() == size ? header : std::string();
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
    if (m_archive.Read(0, kNewSignature.size()) != kNewSignature) return false;
    m_nOffset = kNewSignature.size();
    m_nItems = 0;
  }
  for (;;) {
    m_header = HeaderAt(m_archive, m_nOffset);
    const auto block = m_header.empty() ? std::nullopt : NewBlock::Decode(m_header);
    if (!block || block->type == NewBlock::kEncryption || block->type == NewBlock::kEnd) {
      return false;
    }
    const bool isFile = block->type == NewBlock::kFile;
    if (isFile && m_nItems == number) return true;
    const ULONGLONG next = m_nOffset + m_header.size() + block->dataSize;
    if (next <= m_nOffset || next < block->dataSize) return false;
    m_nOffset = next;
    if (isFile) ++m_nItems;
  }
}

std::optional<platform::FileOwner> Owners::OwnerOf(ULONGLONG number, const Header& header) {
  if (!GoTo(number)) return std::nullopt;
  const auto block = NewBlock::Decode(m_header);
  if (!block || !IsOf(block->rest, header)) return std::nullopt;
  for (Fields records(Fields(block->rest).TakeLast(block->recordsSize)); !records.IsAtEnd();) {
    Fields record(records.Take(records.Number()));
    if (record.Number() == kOwnerRecord) return OwnerIn(record);
  }
  return std::nullopt;
}

}  // namespace morvunp::rar
