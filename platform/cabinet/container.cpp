#include "platform/cabinet/container.h"

#include <cstring>

#include "platform/cabinet/checksum.h"
#include "platform/cabinet/littleendian.h"

namespace cabinet {
namespace {

constexpr std::size_t kHeaderSize = 36;
constexpr std::size_t kFolderSize = 8;
constexpr std::size_t kFileSize = 16;
constexpr BYTE kMajorVersion = 1;
constexpr BYTE kNewestMinorVersion = 3;

/// Takes a zero-terminated text and copies it.
void ReadText(Reader& reader, char (&text)[CB_MAX_CAB_PATH]) {
  const auto bytes = reader.Peek(CB_MAX_CAB_PATH);
  const auto* const end = static_cast<const BYTE*>(std::memchr(bytes.data(), 0, bytes.size()));
  if (end == nullptr) Fail(FDIERROR_CORRUPT_CABINET);
  const auto length = static_cast<std::size_t>(end - bytes.data()) + 1;
  std::memcpy(text, bytes.data(), length);
  reader.Drop(length);
}

void ReadReserves(Reader& reader, Header& header) {
  const BYTE* const sizes = reader.Take(4);
  header.folderReserve = sizes[2];
  header.blockReserve = sizes[3];
  reader.Take(WordAt(sizes));
}

void ReadNeighbours(Reader& reader, Header& header) {
  if (header.HasPrevious()) {
    ReadText(reader, header.previousCabinet);
    ReadText(reader, header.previousDisk);
  }
  if (header.HasNext()) {
    ReadText(reader, header.nextCabinet);
    ReadText(reader, header.nextDisk);
  }
}

/// A sum of 0 was never made. With bytes set apart, some writers sum them up
/// with the block's two sizes and some leave them out.
bool IsIntact(const BYTE* header, std::size_t reserve, const Block& block) {
  if (block.checksum == 0) return true;
  const DWORD data = Checksum(block.packed, block.packedSize, 0);
  return Checksum(header + 4, 4, data) == block.checksum ||
         (reserve != 0 && Checksum(header + 4, 4 + reserve, data) == block.checksum);
}

}  // namespace

Header ReadHeader(Reader& reader) {
  const std::uint64_t start = reader.Position();
  if (reader.Peek(kHeaderSize).size() < kHeaderSize) Fail(FDIERROR_NOT_A_CABINET);
  const BYTE* const bytes = reader.Take(kHeaderSize);
  if (std::memcmp(bytes, "MSCF", 4) != 0) Fail(FDIERROR_NOT_A_CABINET);
  if (bytes[25] != kMajorVersion || bytes[24] > kNewestMinorVersion) {
    Fail(FDIERROR_UNKNOWN_CABINET_VERSION);
  }
  Header header{};
  header.cabinetSize = DwordAt(bytes + 8);
  header.filesOffset = DwordAt(bytes + 16);
  header.folders = WordAt(bytes + 26);
  header.files = WordAt(bytes + 28);
  header.flags = WordAt(bytes + 30);
  header.setId = WordAt(bytes + 32);
  header.index = WordAt(bytes + 34);
  if (header.HasReserve()) ReadReserves(reader, header);
  ReadNeighbours(reader, header);
  header.foldersOffset = static_cast<DWORD>(reader.Position() - start);
  return header;
}

Folder ReadFolder(Reader& reader, const Header& header, WORD index) {
  if (index >= header.folders) Fail(FDIERROR_CORRUPT_CABINET);
  const std::size_t stride = kFolderSize + header.folderReserve;
  reader.Seek(header.foldersOffset + index * stride);
  const BYTE* const bytes = reader.Take(kFolderSize);
  return {DwordAt(bytes), WordAt(bytes + 4), WordAt(bytes + 6)};
}

File ReadFile(Reader& reader) {
  const auto bytes = reader.Peek(kFileSize + CB_MAX_CAB_PATH);
  if (bytes.size() < kFileSize) Fail(FDIERROR_EOF);
  const BYTE* const name = bytes.data() + kFileSize;
  const auto* const end = static_cast<const BYTE*>(std::memchr(name, 0, bytes.size() - kFileSize));
  const bool isCut = bytes.size() < kFileSize + CB_MAX_CAB_PATH;
  if (end == nullptr) Fail(isCut ? FDIERROR_EOF : FDIERROR_CORRUPT_CABINET);
  const BYTE* const entry = bytes.data();
  reader.Drop(static_cast<std::size_t>(end - entry) + 1);
  return {.size = DwordAt(entry),
          .offset = DwordAt(entry + 4),
          .folder = WordAt(entry + 8),
          .date = WordAt(entry + 10),
          .time = WordAt(entry + 12),
          .attributes = WordAt(entry + 14),
          .name = reinterpret_cast<const char*>(name)};
}

Block ReadBlock(Reader& reader, const Header& header) {
  const std::size_t before = kBlockHeaderSize + header.blockReserve;
  const auto head = reader.Peek(kBlockHeaderSize);
  if (head.size() < kBlockHeaderSize) Fail(FDIERROR_EOF);
  const WORD packedSize = WordAt(head.data() + 4);
  const BYTE* const bytes = reader.Take(before + packedSize);
  const Block block{DwordAt(bytes), packedSize, WordAt(bytes + 6), bytes + before};
  if (block.size > kBlockSize || !IsIntact(bytes, header.blockReserve, block)) {
    Fail(FDIERROR_CORRUPT_CABINET);
  }
  return block;
}

}  // namespace cabinet
