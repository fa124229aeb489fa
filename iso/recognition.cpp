#include "iso/recognition.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace morvunp::iso {
namespace {

// ECMA-167 2/8.3: the recognition sequence follows 32768 bytes that belong to
// the system.
constexpr std::uint64_t kRecognitionOffset = 32768;

constexpr std::array<std::wstring_view, 2> kUdfIdentifiers{L"NSR02", L"NSR03"};
constexpr std::array<std::wstring_view, 5> kOtherIdentifiers{L"BEA01", L"BOOT2", L"CD001", L"CDW02",
                                                             L"TEA01"};

template <std::size_t N>
bool Contains(const std::array<std::wstring_view, N>& identifiers, std::wstring_view identifier) {
  return std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end();
}

bool NamesUDF(ByteSource& source) {
  bool udf = false;
  ForEachSector(source, kRecognitionOffset, [&](std::span<const BYTE> sector) {
    const std::wstring identifier = GetStandardIdentifier(sector.data());
    const bool namesUdf = Contains(kUdfIdentifiers, identifier);
    udf = udf || namesUdf;
    return namesUdf || Contains(kOtherIdentifiers, identifier);
  });
  return udf;
}

/// Calls `found` with the first sector that is a primary volume descriptor.
template <class Found>
bool WithPrimaryVolumeDescriptor(ByteSource& source, Found found) {
  bool any = false;
  ForEachSector(source, 0, [&](std::span<const BYTE> sector) {
    any = IsPrimaryVolumeDescriptor(sector.data());
    if (any) found(sector);
    return !any;
  });
  return any;
}

}  // namespace

std::wstring GetStandardIdentifier(const BYTE* block) { return {block + 1, block + 6}; }

FileSystem RecogniseFileSystem(ByteSource& source) {
  if (NamesUDF(source)) return FileSystem::kUDF;
  const bool iso9660 = WithPrimaryVolumeDescriptor(source, [](std::span<const BYTE>) {});
  return iso9660 ? FileSystem::kISO9660 : FileSystem::kNone;
}

std::optional<PrimaryVolumeDescriptor> FindPrimaryVolumeDescriptor(ByteSource& source) {
  std::optional<PrimaryVolumeDescriptor> descriptor;
  WithPrimaryVolumeDescriptor(source, [&](std::span<const BYTE> sector) {
    descriptor = DecodePrimaryVolumeDescriptor(sector);
  });
  return descriptor;
}

}  // namespace morvunp::iso
