#include "iso/iso9660.h"

#include <algorithm>
#include <array>
#include <bit>

#include "frame/ansitext.h"
#include "frame/littleendian.h"

namespace morvunp::iso {
namespace {

using frame::GetLittleEndian16Bit;
using frame::GetLittleEndian32Bit;

// ECMA-119 8.4: type, standard identifier and version of the descriptor.
constexpr std::array<BYTE, 7> kPrimaryStart{1, 'C', 'D', '0', '0', '1', 1};
constexpr std::size_t kBlockSizeOffset = 128;
constexpr std::size_t kRootRecordOffset = 156;

// ECMA-119 9.1: offsets within a directory record.
constexpr std::size_t kLocationOffset = 2;
constexpr std::size_t kDataLengthOffset = 10;
constexpr std::size_t kDateOffset = 18;
constexpr std::size_t kDateLength = 6;
constexpr std::size_t kFlagsOffset = 25;
constexpr std::size_t kIdentifierLengthOffset = 32;
constexpr std::size_t kIdentifierOffset = 33;
constexpr std::size_t kShortestRecord = 34;

constexpr BYTE kExistenceFlag = 1;
constexpr BYTE kDirectoryFlag = 2;

constexpr DWORD kSmallestBlock = 512;
constexpr DWORD kLargestBlock = 2048;

RecordedDate DecodeDate(const BYTE* bytes) {
  if (std::all_of(bytes, bytes + kDateLength, [](BYTE b) { return b == 0; })) return {};
  return {1900 + bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]};
}

}  // namespace

bool IsPrimaryVolumeDescriptor(const BYTE* block) {
  return std::equal(kPrimaryStart.begin(), kPrimaryStart.end(), block);
}

std::optional<PrimaryVolumeDescriptor> DecodePrimaryVolumeDescriptor(std::span<const BYTE> block) {
  const DWORD blockSize = GetLittleEndian16Bit(&block[kBlockSizeOffset]);
  const bool usable =
      std::has_single_bit(blockSize) && blockSize >= kSmallestBlock && blockSize <= kLargestBlock;
  if (!usable) return std::nullopt;
  return PrimaryVolumeDescriptor{
      blockSize, GetLittleEndian32Bit(&block[kRootRecordOffset + kLocationOffset]),
      GetLittleEndian32Bit(&block[kRootRecordOffset + kDataLengthOffset])};
}

std::optional<DirectoryRecord> DecodeDirectoryRecord(std::span<const BYTE> bytes) {
  const std::size_t length = bytes[0];
  if (length < kShortestRecord || length > bytes.size()) return std::nullopt;
  const std::size_t identifierLength = bytes[kIdentifierLengthOffset];
  if (kIdentifierOffset + identifierLength > length) return std::nullopt;
  const auto* const identifier = reinterpret_cast<const char*>(&bytes[kIdentifierOffset]);
  return DirectoryRecord{.recordLength = length,
                         .location = GetLittleEndian32Bit(&bytes[kLocationOffset]),
                         .dataLength = GetLittleEndian32Bit(&bytes[kDataLengthOffset]),
                         .date = DecodeDate(&bytes[kDateOffset]),
                         .directory = IsDirISO9660(&bytes[kFlagsOffset]),
                         .hidden = IsHiddenISO9660(&bytes[kFlagsOffset]),
                         .identifier = {identifier, identifierLength}};
}

bool IsDirISO9660(const BYTE* flags) { return (*flags & kDirectoryFlag) != 0; }

bool IsHiddenISO9660(const BYTE* flags) { return (*flags & kExistenceFlag) != 0; }

void GetNameItemISO9660(const DirectoryRecord& record, std::wstring& name) {
  frame::DecodeAnsi(record.identifier.substr(0, record.identifier.find('\0')), name);
  if (!name.ends_with(L";1")) return;
  name.resize(name.size() - 2);
  if (name.ends_with(L'.')) name.pop_back();
}

}  // namespace morvunp::iso
