#include "rar/completeness.h"

#include <algorithm>
#include <string_view>

#include "frame/checksum.h"
#include "rar/archivebytes.h"
#include "rar/newblock.h"
#include "rar/oldblock.h"

namespace morvunp::rar {
namespace {

using morvunp::ItemReason;

/// How far in front of an archive a program may stand.
constexpr ULONGLONG kLongestStub = 4 << 20;
/// More than any archive has.
constexpr int kMostBlocks = 10'000'000;
/// Most headers are shorter.
constexpr DWORD kFirstRead = 256;
/// The end block of the old format, where the archive is no volume.
constexpr std::string_view kOldEnd("\xC4\x3D\x7B\0\x40\x07\0", 7);
/// What may stand behind an archive that has none.
constexpr std::string_view kPadding("\0\x1A\r\n", 4);

struct Block {
  enum Kind {
    kMain,
    kFile,
    kOther,
    /// All that follows is encrypted.
    kHiding,
    /// The archive ends here.
    kEnd,
    /// There is none, and the archive may end so.
    kNone,
    /// The file ends in the header, or where one should be.
    kFileEnd,
    kDamaged,
  };

  Kind kind = kOther;
  /// Bytes of header and data.
  ULONGLONG length = 0;
  /// A file that began in an earlier volume.
  bool isContinuation = false;
};

Block::Kind KindOf(const NewBlock& block) {
  switch (block.type) {
    case NewBlock::kMain:
      return Block::kMain;
    case NewBlock::kFile:
      return Block::kFile;
    case NewBlock::kEncryption:
      return Block::kHiding;
    case NewBlock::kEnd:
      return Block::kEnd;
    default:
      return Block::kOther;
  }
}

Block ReadNewBlock(const ArchiveBytes& file, ULONGLONG offset) {
  std::string bytes = file.Read(offset, kFirstRead);
  if (bytes.size() < NewBlock::kShortest) return {Block::kFileEnd};
  const DWORD size = NewBlock::HeaderSize(bytes);
  if (size == 0) return {Block::kDamaged};
  if (size > file.Size() - offset) return {Block::kFileEnd};
  if (size > bytes.size()) bytes = file.Read(offset, size);
  if (size > bytes.size()) return {Block::kFileEnd};
  const auto block = NewBlock::Decode(std::string_view(bytes).substr(0, size));
  if (!block) return {Block::kDamaged};
  return {KindOf(*block), size + std::min(block->dataSize, file.Size()), block->isContinuation};
}

bool IsIntact(const ArchiveBytes& file, ULONGLONG offset, const OldBlock& block) {
  const std::string header = file.Read(offset, block.HeaderSize());
  return header.size() == block.HeaderSize() && header.size() >= OldBlock::kShortest &&
         (frame::Crc32(std::string_view(header).substr(2)) & 0xFFFF) == block.Checksum();
}

/// Comments are left out of the sum.
Block::Kind KindOfMain(const ArchiveBytes& file, ULONGLONG offset, const OldBlock& block) {
  if (!block.HasComment() && !IsIntact(file, offset, block)) return Block::kDamaged;
  return block.HidesBlocks() ? Block::kHiding : Block::kMain;
}

/// Many writers of the old format leave no end block: what cannot be a block stands
/// behind an archive.
Block::Kind KindOf(const ArchiveBytes& file, ULONGLONG offset, const OldBlock& block,
                   bool isFirst) {
  const BYTE type = block.Type();
  const bool isKnown = type >= OldBlock::kMain && type <= OldBlock::kEnd;
  if (!isKnown || (type == OldBlock::kMain) != isFirst) return Block::kNone;
  if (type == OldBlock::kEnd) return Block::kEnd;
  const bool isWithin = block.HeaderSize() <= file.Size() - offset;
  if (isFirst && isWithin) return KindOfMain(file, offset, block);
  if (!isFirst && !block.HasData() && !IsIntact(file, offset, block)) return Block::kNone;
  if (block.HeaderSize() < OldBlock::kShortest) return Block::kNone;
  if (!isWithin) return Block::kFileEnd;
  return block.IsFile() ? Block::kFile : Block::kOther;
}

Block ReadOldBlock(const ArchiveBytes& file, ULONGLONG offset, bool isFirst) {
  const std::string bytes = file.Read(offset, OldBlock::kLength);
  if (bytes.size() < OldBlock::kShortest) {
    const bool isPadding = bytes.find_first_not_of(kPadding) == std::string::npos;
    return {isPadding ? Block::kNone : Block::kFileEnd};
  }
  const OldBlock block(bytes);
  const ULONGLONG length = block.HeaderSize() + std::min(block.DataSize(), file.Size());
  return {KindOf(file, offset, block, isFirst), length, block.IsContinuation()};
}

/// A walk over the blocks of one file.
class Walk {
 public:
  explicit Walk(const std::wstring& path) : m_file(path) { Begin(); }

  /// The file begins and ends as most whole archives do.
  /// The volume says that no other follows it.
  bool IsLastVolume() const;
  bool IsWhole() const { return m_first.kind == Block::kMain && HasUsualEnd(); }

  /// Bytes of the file where all behind the first block is encrypted, else 0.
  ULONGLONG HiddenSize() const { return m_first.kind == Block::kHiding ? m_file.Size() : 0; }
  /// Goes on to the end. `begun` counts the items that begin in this file, too.
  Gap Finish(ULONGLONG& begun);

 private:
  void Begin();
  void BeginAt(ULONGLONG signature, bool isOld);
  void BeginBehindProgram();
  Block Read(bool isFirst) const {
    return m_bOld ? ReadOldBlock(m_file, m_nOffset, isFirst) : ReadNewBlock(m_file, m_nOffset);
  }
  bool HasUsualEnd() const;
  Gap FindEnd(ULONGLONG& begun);

  ArchiveBytes m_file;
  bool m_bOld = false;
  ULONGLONG m_nOffset = 0;
  /// kMain, or why the walk ends here.
  Block m_first{Block::kEnd};
};

void Walk::Begin() {
  const std::string start = m_file.Read(0, static_cast<DWORD>(kNewSignature.size()));
  if (start == kNewSignature) {
    BeginAt(0, false);
  } else if (start.starts_with(kOldSignature)) {
    BeginAt(0, true);
  } else if (kNewSignature.starts_with(start)) {
    m_first.kind = Block::kFileEnd;
  } else {
    BeginBehindProgram();
  }
}

void Walk::BeginAt(ULONGLONG signature, bool isOld) {
  m_bOld = isOld;
  m_nOffset = signature + (isOld ? kOldSignature : kNewSignature).size();
  m_first = Read(true);
  const bool isMain = m_first.kind == Block::kMain || m_first.kind == Block::kHiding;
  if (!isMain && m_first.kind != Block::kFileEnd) m_first.kind = Block::kDamaged;
  m_nOffset += m_first.length;
}

/// What looks like the beginning of an archive may be part of the program.
void Walk::BeginBehindProgram() {
  constexpr std::string_view kMark = kOldSignature.substr(0, kOldSignature.size() - 1);
  const std::string stub =
      m_file.Read(0, static_cast<DWORD>(std::min(kLongestStub, m_file.Size())));
  for (std::size_t at = stub.find(kMark); at != stub.npos; at = stub.find(kMark, at + 1)) {
    const std::string_view rest = std::string_view(stub).substr(at);
    const bool isOld = rest.starts_with(kOldSignature);
    if (!isOld && !rest.starts_with(kNewSignature)) continue;
    BeginAt(at, isOld);
    if (m_first.kind != Block::kDamaged) return;
  }
  m_first.kind = Block::kEnd;
}

bool Walk::IsLastVolume() const {
  if (!IsWhole()) return false;
  // An end block of the usual length of old archives names no next volume.
  if (m_bOld) return true;
  constexpr ULONGLONG kHasNext = 1;
  const std::string end = m_file.Read(m_file.Size() - NewBlock::kEndLength, NewBlock::kEndLength);
  const auto block = NewBlock::Decode(end);
  return block && (Fields(block->rest).Number() & kHasNext) == 0;
}

bool Walk::HasUsualEnd() const {
  if (m_nOffset + NewBlock::kEndLength > m_file.Size()) return false;
  const std::string end = m_file.Read(m_file.Size() - NewBlock::kEndLength, NewBlock::kEndLength);
  if (m_bOld) return end.ends_with(kOldEnd);
  if (end.size() < NewBlock::kEndLength || NewBlock::HeaderSize(end) != end.size()) return false;
  const auto block = NewBlock::Decode(end);
  return block && block->type == NewBlock::kEnd;
}

Gap Walk::Finish(ULONGLONG& begun) {
  const Gap gap = FindEnd(begun);
  return m_file.HasFailed() ? Gap() : gap;
}

Gap Walk::FindEnd(ULONGLONG& begun) {
  Block block = m_first;
  for (int i = 0; i < kMostBlocks; ++i) {
    if (block.kind == Block::kDamaged) return {ItemReason::kDamaged};
    if (block.kind == Block::kFileEnd) return {ItemReason::kCutShort, begun};
    if (block.kind == Block::kHiding) break;
    // Nobody packs nothing: what ends behind its first block is cut there.
    if (block.kind == Block::kNone && i == 1) return {ItemReason::kCutShort, begun};
    if (block.kind == Block::kEnd || block.kind == Block::kNone) break;
    const bool isFile = block.kind == Block::kFile;
    // In the volume that the walk begins with, the rest of a file is an item.
    if (isFile && (!block.isContinuation || begun == 0)) ++begun;
    if (m_nOffset > m_file.Size()) return {ItemReason::kCutShort, begun, isFile};
    block = Read(false);
    m_nOffset += block.length;
  }
  return {};
}

/// What stands beside a set under the name of one more volume is none.
std::vector<std::wstring> VolumesOfSet(const std::vector<std::wstring>& named) {
  std::vector<std::wstring> volumes;
  for (const std::wstring& path : named) {
    volumes.push_back(path);
    if (named.size() > 1 && Walk(path).IsLastVolume()) break;
  }
  return volumes;
}

}  // namespace

Gap FindGap(const std::vector<std::wstring>& named) {
  const std::vector<std::wstring> volumes = VolumesOfSet(named);
  const bool isWhole = std::all_of(volumes.begin(), volumes.end(),
                                   [](const auto& path) { return Walk(path).IsWhole(); });
  if (isWhole) return {};
  ULONGLONG begun = 0;
  for (const std::wstring& path : volumes) {
    const ULONGLONG before = begun;
    Gap gap = Walk(path).Finish(begun);
    // The file that a volume goes on with is the one that an earlier one began.
    gap.isDataCut = gap.isDataCut || (before != 0 && begun == before);
    if (gap.problem != ItemReason::kNone) return gap;
  }
  return {.hiddenSize = volumes.size() == 1 ? Walk(volumes.front()).HiddenSize() : 0};
}

}  // namespace morvunp::rar
