#include "iso/udf.h"

#include <algorithm>

#include "frame/littleendian.h"
#include "platform/unicode.h"

namespace morvunp::iso {
namespace {

using frame::GetLittleEndian16Bit;
using frame::GetLittleEndian32Bit;
using frame::GetLittleEndian64Bit;

constexpr std::size_t kChecksumOffset = 4;
constexpr std::size_t kVolumeMapsOffset = 440;
constexpr BYTE kPhysicalMap = 1;
constexpr BYTE kPhysicalMapLength = 6;
constexpr std::size_t kFileSetRootOffset = 400;
constexpr std::size_t kIdentifierHeader = 38;
constexpr std::size_t kAllocationExtentHeader = 24;
constexpr std::size_t kShortLength = 8;
constexpr std::size_t kLongLength = 16;

constexpr BYTE kFolderType = 4;
constexpr BYTE kFileType = 5;
constexpr BYTE kHiddenBit = 1;
constexpr BYTE kParentBit = 8;

WORD TagIdentifier(std::span<const BYTE> bytes) { return GetLittleEndian16Bit(bytes.data()); }

/// 4/14.14.2
UDFICB DecodeICB(const BYTE* bytes) {
  return {GetLittleEndian32Bit(bytes), GetLittleEndian32Bit(bytes + 4),
          GetLittleEndian16Bit(bytes + 8)};
}

/// 1/7.3, without type, zone and fractions.
RecordedDate DecodeTimestamp(const BYTE* bytes) {
  return {GetLittleEndian16Bit(bytes + 2), bytes[4], bytes[5], bytes[6], bytes[7], bytes[8]};
}

/// Appends a 16-bit unit; the second half of a pair joins the first.
void AppendUnit(std::wstring& text, wchar_t unit) {
  if (platform::IsLowSurrogate(unit) && !text.empty() && platform::IsHighSurrogate(text.back())) {
    text.back() = platform::JoinSurrogates(text.back(), unit);
  } else {
    text += unit;
  }
}

}  // namespace

bool UDFCheckTag(std::span<const BYTE> bytes, UdfTag tag) {
  if (bytes.size() < kUdfTagLength || TagIdentifier(bytes) != static_cast<WORD>(tag)) return false;
  BYTE sum = 0;
  for (std::size_t i = 0; i < kUdfTagLength; ++i) {
    if (i != kChecksumOffset) sum = static_cast<BYTE>(sum + bytes[i]);
  }
  return sum == bytes[kChecksumOffset];
}

std::optional<UdfSequence> DecodeAnchor(std::span<const BYTE> sector) {
  if (sector.size() < 24 || !UDFCheckTag(sector, UdfTag::kAnchor)) return std::nullopt;
  return UdfSequence{GetLittleEndian32Bit(&sector[16]), GetLittleEndian32Bit(&sector[20])};
}

std::optional<UDFPARTITION> DecodePartition(std::span<const BYTE> sector) {
  if (sector.size() < 196 || !UDFCheckTag(sector, UdfTag::kPartition)) return std::nullopt;
  return UDFPARTITION{GetLittleEndian16Bit(&sector[22]), GetLittleEndian32Bit(&sector[188]),
                      GetLittleEndian32Bit(&sector[192])};
}

std::optional<UDFVOLUME> DecodeLogicalVolume(std::span<const BYTE> sector) {
  if (sector.size() < kVolumeMapsOffset) return std::nullopt;
  UDFVOLUME volume{};
  std::copy_n(&sector[84], volume.identifier.size(), volume.identifier.begin());
  volume.blockSize = GetLittleEndian32Bit(&sector[212]);
  volume.fileSet = DecodeICB(&sector[248]);
  std::size_t at = kVolumeMapsOffset;
  for (DWORD left = GetLittleEndian32Bit(&sector[268]); left > 0; --left) {
    if (sector.size() - at < kPhysicalMapLength) return std::nullopt;
    const BYTE* const map = &sector[at];
    if (map[0] != kPhysicalMap || map[1] != kPhysicalMapLength) return std::nullopt;
    volume.partitionMaps.push_back(
        {map[0], map[1], GetLittleEndian16Bit(map + 2), GetLittleEndian16Bit(map + 4)});
    at += kPhysicalMapLength;
  }
  return volume;
}

std::optional<UDFICB> DecodeFileSetRoot(std::span<const BYTE> bytes) {
  if (bytes.size() < kUdfFileSetLength || !UDFCheckTag(bytes, UdfTag::kFileSet)) {
    return std::nullopt;
  }
  return DecodeICB(&bytes[kFileSetRootOffset]);
}

std::optional<UdfFileEntry> DecodeFileEntry(std::span<const BYTE> bytes) {
  if (bytes.size() < kUdfEntryHeader || !UDFCheckTag(bytes, UdfTag::kFileEntry))
    return std::nullopt;
  const BYTE fileType = bytes[27];
  const DWORD attributes = GetLittleEndian32Bit(&bytes[168]);
  const DWORD allocation = GetLittleEndian32Bit(&bytes[172]);
  if (fileType != kFolderType && fileType != kFileType) return std::nullopt;
  if (ULONGLONG{attributes} + allocation > bytes.size() - kUdfEntryHeader) return std::nullopt;
  return UdfFileEntry{.folder = fileType == kFolderType,
                      .informationLength = GetLittleEndian64Bit(&bytes[56]),
                      .blocksRecorded = GetLittleEndian64Bit(&bytes[64]),
                      .accessed = DecodeTimestamp(&bytes[72]),
                      .modified = DecodeTimestamp(&bytes[84]),
                      .allocationType = static_cast<BYTE>(bytes[34] & 7),
                      .extendedAttributesLength = attributes,
                      .allocation = bytes.subspan(kUdfEntryHeader + attributes, allocation)};
}

std::optional<UdfFileIdentifier> DecodeFileIdentifier(std::span<const BYTE> bytes) {
  if (bytes.size() < kIdentifierHeader) return std::nullopt;
  const BYTE characteristics = bytes[18];
  const bool parent = (characteristics & kParentBit) != 0;
  if (!parent && !UDFCheckTag(bytes, UdfTag::kFileIdentifier)) return std::nullopt;
  const std::size_t start = kIdentifierHeader + GetLittleEndian16Bit(&bytes[36]);
  const std::size_t end = start + bytes[19];
  const std::size_t padded = (end + 3) / 4 * 4;
  if (padded > bytes.size()) return std::nullopt;
  const auto padding = bytes.subspan(end, padded - end);
  if (std::any_of(padding.begin(), padding.end(), [](BYTE b) { return b != 0; })) {
    return std::nullopt;
  }
  return UdfFileIdentifier{.hidden = (characteristics & kHiddenBit) != 0,
                           .parent = parent,
                           .icb = DecodeICB(&bytes[20]),
                           .identifier = bytes.subspan(start, end - start),
                           .length = padded};
}

std::optional<std::span<const BYTE>> DecodeAllocationExtent(std::span<const BYTE> bytes) {
  if (bytes.size() < kAllocationExtentHeader || !UDFCheckTag(bytes, UdfTag::kAllocationExtent)) {
    return std::nullopt;
  }
  const DWORD length = GetLittleEndian32Bit(&bytes[20]);
  if (length > bytes.size() - kAllocationExtentHeader) return std::nullopt;
  return bytes.subspan(kAllocationExtentHeader, length);
}

bool DecodeExtents(std::span<const BYTE> bytes, BYTE type, WORD partition,
                   std::vector<UDFEXTENT>& extents) {
  if (type != kUdfShortDescriptors && type != kUdfLongDescriptors) return false;
  const bool isLong = type == kUdfLongDescriptors;
  const std::size_t step = isLong ? kLongLength : kShortLength;
  if (bytes.size() % step != 0) return false;
  extents.reserve(extents.size() + bytes.size() / step);
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    extents.push_back({GetLittleEndian32Bit(&bytes[at]), GetLittleEndian32Bit(&bytes[at + 4]),
                       isLong ? GetLittleEndian16Bit(&bytes[at + 8]) : partition});
  }
  return true;
}

void GetDString(const BYTE* bytes, WORD length, std::wstring& text) {
  text.clear();
  if (length < 2 || (bytes[0] != 8 && bytes[0] != 16)) return;
  const bool isWide = bytes[0] == 16;
  for (std::size_t i = 1; i < length; i += isWide ? 2 : 1) {
    const BYTE low = isWide && i + 1 < length ? bytes[i + 1] : BYTE{0};
    AppendUnit(text, isWide ? static_cast<wchar_t>(bytes[i] << 8 | low) : wchar_t{bytes[i]});
  }
}

}  // namespace morvunp::iso
