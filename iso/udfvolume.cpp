#include "iso/udfvolume.h"

#include <algorithm>

namespace morvunp::iso {
namespace {

constexpr DWORD kSectorSizes[] = {2048, 512, 256, 4096, 1024};
constexpr DWORD kAnchorSector = 256;
// ECMA-167 3/8.4.2.2 asks for 16 at least; nobody writes hundreds.
constexpr DWORD kMostSequenceSectors = 4096;

/// Access to a list as the framework gives it.
template <class List>
auto& At(List& list, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= list.size()) AfxThrowInvalidArgException();
  return list[static_cast<std::size_t>(index)];
}

}  // namespace

bool UdfVolumes::Open(ByteSource& source) {
  if (!ChooseSectorSize(source)) return false;
  const auto anchor =
      DecodeAnchor(ReadWhole(source, ULONGLONG{kAnchorSector} * m_nSectorSize, m_nSectorSize));
  return anchor && ReadSequence(source, *anchor) && Bind();
}

void UdfVolumes::RemoveUDFAllItems() {
  m_arrPartitions.clear();
  m_arrLogicalVolumes.clear();
}

bool UdfVolumes::ChooseSectorSize(ByteSource& source) {
  for (const DWORD size : kSectorSizes) {
    if (!IsUDFSectorSize(source, size)) continue;
    m_nSectorSize = size;
    return true;
  }
  return false;
}

bool UdfVolumes::IsUDFSectorSize(ByteSource& source, DWORD size) const {
  if (source.Size() < ULONGLONG{kAnchorSector + 1} * size) return false;
  return UDFCheckTag(ReadWhole(source, ULONGLONG{kAnchorSector} * size, kUdfTagLength),
                     UdfTag::kAnchor);
}

bool UdfVolumes::ReadSequence(ByteSource& source, const UdfSequence& sequence) {
  const DWORD sectors = std::min(sequence.length / m_nSectorSize, kMostSequenceSectors);
  for (DWORD i = 0; i < sectors; ++i) {
    const auto sector =
        ReadWhole(source, (ULONGLONG{sequence.location} + i) * m_nSectorSize, m_nSectorSize);
    if (UDFCheckTag(sector, UdfTag::kTerminating)) return true;
    if (!TakeDescriptor(sector)) return false;
  }
  return true;
}

/// Keeps what the descriptor tells, if it is one of those in use. False when it
/// makes the image unusable.
bool UdfVolumes::TakeDescriptor(std::span<const BYTE> sector) {
  if (const auto partition = DecodePartition(sector)) m_arrPartitions.push_back(*partition);
  if (!UDFCheckTag(sector, UdfTag::kLogicalVolume)) return true;
  auto volume = DecodeLogicalVolume(sector);
  // UDF 2.2.4.2: the logical block size is the sector size.
  if (!volume || volume->blockSize != m_nSectorSize) return false;
  m_arrLogicalVolumes.push_back(std::move(*volume));
  return true;
}

bool UdfVolumes::Bind() {
  for (std::size_t i = 0; i < m_arrLogicalVolumes.size(); ++i) {
    for (UDFPARTMAP& map : m_arrLogicalVolumes[i].partitionMaps) {
      if (!BindMap(map, static_cast<int>(i))) return false;
    }
  }
  return true;
}

bool UdfVolumes::BindMap(UDFPARTMAP& map, int volume) {
  const auto partition =
      std::find_if(m_arrPartitions.begin(), m_arrPartitions.end(),
                   [&](const UDFPARTITION& p) { return p.number == map.partitionNumber; });
  if (partition == m_arrPartitions.end() || partition->owner != -1) return false;
  partition->owner = volume;
  map.partitionIndex = static_cast<int>(partition - m_arrPartitions.begin());
  return true;
}

bool UdfVolumes::HasPartition(int volume, int partitionReference) const {
  const auto index = static_cast<std::size_t>(volume);
  return index < m_arrLogicalVolumes.size() && static_cast<std::size_t>(partitionReference) <
                                                   m_arrLogicalVolumes[index].partitionMaps.size();
}

std::optional<ULONGLONG> UdfVolumes::PositionOf(int volume, int partitionReference, DWORD block,
                                                DWORD length) const {
  const UDFVOLUME& logical = At(m_arrLogicalVolumes, volume);
  const UDFPARTMAP& map = At(logical.partitionMaps, partitionReference);
  const UDFPARTITION& partition = At(m_arrPartitions, map.partitionIndex);
  const ULONGLONG start = ULONGLONG{partition.start} * m_nSectorSize;
  const ULONGLONG position = start + ULONGLONG{block} * logical.blockSize;
  const ULONGLONG end = start + ULONGLONG{partition.length} * m_nSectorSize;
  if (position + length > end) return std::nullopt;
  return position;
}

std::optional<std::vector<BYTE>> UdfVolumes::ReadExtent(ByteSource& source, int volume,
                                                        int partitionReference, DWORD block,
                                                        DWORD length) const {
  const auto position = PositionOf(volume, partitionReference, block, length);
  if (!position) return std::nullopt;
  return ReadWhole(source, *position, length);
}

}  // namespace morvunp::iso
