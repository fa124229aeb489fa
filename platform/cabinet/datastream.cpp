#include "platform/cabinet/datastream.h"

#include <algorithm>
#include <cstring>

namespace cabinet {
namespace {

/// Files may lie in any order, but a table that sends the reader back and
/// forth for ever is refused: within a folder, or from one to another. Blocks
/// are counted, because one of a single byte takes its time too.
constexpr std::uint64_t kMostRepeatedBlocks = (std::uint64_t{8} << 30) / kBlockSize;

}  // namespace

void DataStream::EnterTable(std::optional<WORD> continued) {
  const bool isInHand = continued && m_nFolder == continued;
  const bool isBegun = continued && m_begun.test(*continued);
  const bool isAbandoned = continued && m_abandoned.test(*continued);
  m_begun.reset();
  m_begun.set(0, isBegun);
  m_abandoned.reset();
  m_abandoned.set(0, isAbandoned);
  m_nFolder = isInHand ? std::optional<WORD>(WORD{0}) : std::nullopt;
  m_bAtHome = false;
}

void DataStream::Abandon(WORD folder, FDIERROR error) {
  m_abandoned.set(folder);
  m_abandonedFor = error;
  m_nFolder.reset();
}

void DataStream::GoTo(WORD folder, const File& file) {
  if (m_abandoned.test(folder)) Fail(m_abandonedFor);
  m_bMayMove = file.IsToNext();
  if (m_nFolder != folder || file.offset < m_nBlockOffset) {
    NoteRepetition(folder);
    Begin(folder);
  }
  while (file.offset - m_nBlockOffset >= m_block.size()) Advance();
  m_nTaken = static_cast<std::size_t>(file.offset - m_nBlockOffset);
}

std::span<const BYTE> DataStream::Bytes() {
  if (m_nTaken == m_block.size()) Advance();
  return m_block.subspan(m_nTaken);
}

/// What a folder that was left had unpacked is not kept: all of it counts when
/// it is begun again.
void DataStream::NoteRepetition(WORD folder) {
  constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t here = m_nBlockOffset + m_block.size();
  const std::uint64_t before = m_begun.test(folder) ? kAll : 0;
  m_nKnown = m_nFolder == folder ? std::max(m_nKnown, here) : before;
  m_begun.set(folder);
}

void DataStream::Begin(WORD folder) {
  m_nFolder.reset();
  m_nFolderHere = folder;
  // The first folder may begin in an earlier cabinet, the last one end in a
  // later one.
  if (m_pVolume == nullptr || !m_bAtHome || folder == 0) {
    m_pVolume.reset();
    m_pVolume = m_source.First(m_nFolderHere);
    m_bAtHome = folder != 0;
  }
  m_folder = ReadFolder(m_pVolume->reader, m_pVolume->header, m_nFolderHere);
  m_pVolume->reader.Seek(m_folder.dataOffset);
  m_pDecoder = MakeDecoder(m_host, m_folder.compression);
  m_block = {};
  m_nBlockOffset = 0;
  m_nTaken = 0;
  m_nFolder = folder;
}

void DataStream::Advance() {
  m_nBlockOffset += m_block.size();
  m_block = {};
  const bool isRepeated = m_nBlockOffset < m_nKnown;
  if (isRepeated && ++m_nRepeatedBlocks > kMostRepeatedBlocks) Fail(FDIERROR_CORRUPT_CABINET);
  WORD size = 0;
  const std::span<const BYTE> packed = ReadPacked(size);
  m_block = {m_pDecoder->Decode(packed, size), size};
  m_nTaken = 0;
}

std::span<const BYTE> DataStream::ReadPacked(WORD& size) {
  Block block = NextBlock();
  if (block.size != 0) {
    size = block.size;
    return {block.packed, block.packedSize};
  }
  m_nJoined = 0;
  for (;;) {
    Join(block);
    if (block.size != 0) break;
    // Only the last block of a cabinet can go on in the next.
    if (m_folder.blocks != 0) Fail(FDIERROR_CORRUPT_CABINET);
    block = NextBlock();
  }
  size = block.size;
  return {m_joined->Get(), m_nJoined};
}

Block DataStream::NextBlock() {
  if (m_folder.blocks == 0) GoToNextVolume();
  --m_folder.blocks;
  return ReadBlock(m_pVolume->reader, m_pVolume->header);
}

void DataStream::Join(Block block) {
  if (!m_joined) m_joined.emplace(m_host, kMostPacked);
  if (block.packedSize > kMostPacked - m_nJoined) Fail(FDIERROR_CORRUPT_CABINET);
  std::memcpy(m_joined->Get() + m_nJoined, block.packed, block.packedSize);
  m_nJoined += block.packedSize;
}

void DataStream::GoToNextVolume() {
  const Header& header = m_pVolume->header;
  const bool isLastFolder = m_nFolderHere + 1 == header.folders;
  const bool mayMove = m_bMayMove || m_source.IsEarlier(*m_pVolume);
  if (!mayMove || !isLastFolder || !header.HasNext()) Fail(FDIERROR_CORRUPT_CABINET);
  m_pVolume = m_source.Next(*m_pVolume);
  m_bMoved = true;
  m_bAtHome = false;
  m_nFolderHere = 0;
  const Folder rest = ReadFolder(m_pVolume->reader, m_pVolume->header, 0);
  if (rest.compression != m_folder.compression || rest.blocks == 0) {
    Fail(FDIERROR_CORRUPT_CABINET);
  }
  m_folder = rest;
  m_pVolume->reader.Seek(rest.dataOffset);
}

}  // namespace cabinet
