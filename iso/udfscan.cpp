#include "iso/udfscan.h"

#include <algorithm>

namespace morvunp::iso {
namespace {

// ECMA-167 4/14.9: an entry fits into one logical block. An ICB with several
// entries is longer, but only the first one is in use.
constexpr DWORD kLongestEntry = 16384;
// A block of continuation describes hundreds of extents of up to 1 GiB each.
constexpr int kMostContinuations = 4096;

ULONGLONG BytesOf(std::span<const UDFEXTENT> extents) {
  ULONGLONG bytes = 0;
  for (const UDFEXTENT& extent : extents) bytes += extent.Bytes();
  return bytes;
}

bool IsContinuation(const UDFEXTENT& extent) {
  return extent.Type() == UdfExtentType::kContinuation && extent.Bytes() > 0;
}

}  // namespace

bool UdfScan::InitScanUDF() {
  bool result = false;
  const auto count = static_cast<int>(m_volumes.LogicalVolumes().size());
  for (int volume = 0; volume < count; ++volume) {
    if (!ScanVolume(volume)) {
      m_completeness.NoteGap();
      break;
    }
    result = true;
  }
  return result;
}

bool UdfScan::ScanVolume(int volume) {
  UDFVOLUME& logical = m_volumes.LogicalVolumes()[static_cast<std::size_t>(volume)];
  const UDFICB& fileSet = logical.fileSet;
  if (fileSet.Bytes() < kUdfFileSetLength) return false;
  const auto position =
      m_volumes.PositionOf(volume, fileSet.partition, fileSet.location, fileSet.Bytes());
  if (!position) return false;
  const auto root = DecodeFileSetRoot(ReadWhole(m_source, *position, kUdfFileSetLength));
  if (!root) return false;
  logical.rootICBs.push_back(*root);
  return std::all_of(logical.rootICBs.begin(), logical.rootICBs.end(),
                     [&](const UDFICB& icb) { return ScanRoot(volume, icb); });
}

bool UdfScan::ScanRoot(int volume, const UDFICB& icb) {
  const auto entry = ReadEntry(volume, icb);
  if (!entry) return false;
  // ECMA-167 4/14.9.19: whole attributes only; they end inside the entry.
  const DWORD attributes = entry->extendedAttributesLength;
  if (attributes % 4 != 0 || attributes > icb.Bytes() - kUdfEntryHeader) return false;
  return !entry->folder || ReadContents(*entry, icb, {volume, icb.partition}, kRoot);
}

std::optional<UdfFileEntry> UdfScan::ReadEntry(int volume, const UDFICB& icb) {
  const auto position = m_volumes.PositionOf(volume, icb.partition, icb.location, icb.Bytes());
  if (!position) return std::nullopt;
  m_completeness.NoteExtent(*position, kUdfEntryHeader);
  const auto bytes = m_window.Read(m_source, *position, std::min(icb.Bytes(), kLongestEntry));
  return bytes ? DecodeFileEntry(*bytes) : std::nullopt;
}

UdfDetails& UdfScan::AppendItem(std::wstring_view name, const UdfFileEntry& entry, bool hidden,
                                ItemIndex parent) {
  const __time64_t modified = m_datesModified.TimeOf(entry.modified);
  const __time64_t accessed = m_datesAccessed.TimeOf(entry.accessed);
  CIsoItemInfo& item = m_items.Append(name, parent);
  item.m_bFolder = entry.folder ? 1 : 0;
  item.m_bHidden = hidden ? 1 : 0;
  item.m_nSize = entry.informationLength;
  item.m_timeModified = modified;
  UdfDetails& details = m_items.AppendDetails(item);
  details.m_timeAccessed = accessed;
  details.m_nBlocksRecorded = entry.blocksRecorded;
  return details;
}

bool UdfScan::ReadDirUDF(std::wstring_view name, const UdfFileEntry& entry, const UDFICB& icb,
                         const Tree& tree, bool hidden, ItemIndex parent) {
  AppendItem(name, entry, hidden, parent);
  return ReadContents(entry, icb, tree, m_items.Last());
}

bool UdfScan::ReadInfoFileUDF(std::wstring_view name, const UdfFileEntry& entry, const Tree& tree,
                              bool hidden, ItemIndex parent) {
  const auto allocation = AllocationOf(entry, tree);
  if (!allocation) return false;
  if (!allocation->m_bDataInICB) NoteExtents(entry.informationLength, tree);
  AppendItem(name, entry, hidden, parent).m_allocation = m_items.Keep(*allocation);
  return true;
}

void UdfScan::NoteExtents(ULONGLONG length, const Tree& tree) {
  for (const UDFEXTENT& extent : m_extents) {
    const auto wanted = static_cast<DWORD>(std::min<ULONGLONG>(extent.Bytes(), length));
    length -= wanted;
    const bool isData = wanted > 0 && extent.Type() == UdfExtentType::kRecorded;
    if (!isData || !m_volumes.HasPartition(tree.volume, extent.partition)) continue;
    const auto position =
        m_volumes.PositionOf(tree.volume, extent.partition, extent.position, extent.Bytes());
    if (position) m_completeness.NoteExtent(*position, wanted);
  }
}

bool UdfScan::ReadContents(const UdfFileEntry& entry, const UDFICB& icb, const Tree& tree,
                           ItemIndex folder) {
  // Nothing is allocated for what the image does not have.
  if (entry.informationLength > m_source.Size()) return false;
  const auto key = m_volumes.PositionOf(tree.volume, icb.partition, icb.location, icb.Bytes());
  if (!m_guard.Enter(*key, entry.informationLength, m_items.PathLengthOf(folder))) {
    m_completeness.NoteGap();
    return true;
  }
  const auto bytes = ReadFolderData(entry, tree);
  const bool read = bytes && ReadIdentifiers(*bytes, tree, folder);
  m_guard.Leave(entry.informationLength);
  return read;
}

bool UdfScan::ReadIdentifiers(std::span<const BYTE> bytes, const Tree& tree, ItemIndex folder) {
  while (!bytes.empty()) {
    const auto identifier = DecodeFileIdentifier(bytes);
    if (!identifier) return false;
    if (!identifier->parent && !ReadChild(*identifier, tree, folder)) return false;
    bytes = bytes.subspan(identifier->length);
  }
  return true;
}

bool UdfScan::ReadChild(const UdfFileIdentifier& identifier, const Tree& tree, ItemIndex folder) {
  const auto entry = ReadEntry(tree.volume, identifier.icb);
  if (!entry) return false;
  GetDString(identifier.identifier.data(), static_cast<WORD>(identifier.identifier.size()), m_name);
  if (!m_guard.CountPath(m_items.PathLengthOf(folder) + m_name.size())) {
    m_completeness.NoteGap();
    return true;
  }
  if (!entry->folder) return ReadInfoFileUDF(m_name, *entry, tree, identifier.hidden, folder);
  return ReadDirUDF(m_name, *entry, identifier.icb, tree, identifier.hidden, folder);
}

std::optional<std::vector<BYTE>> UdfScan::ReadFolderData(const UdfFileEntry& entry,
                                                         const Tree& tree) {
  const auto allocation = AllocationOf(entry, tree);
  if (!allocation) return std::nullopt;
  const ULONGLONG length = entry.informationLength;
  if (allocation->m_bDataInICB) {
    const std::span<const BYTE> data = allocation->m_arrData;
    if (data.size() < length) return std::nullopt;
    return std::vector<BYTE>(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(length));
  }
  if (BytesOf(allocation->m_arrExtents) < length) return std::nullopt;
  std::vector<BYTE> data;
  data.reserve(static_cast<std::size_t>(length));
  for (const UDFEXTENT& extent : allocation->m_arrExtents) {
    // The whole extent must lie in its partition, but only what the folder has
    // is read.
    const auto position =
        m_volumes.PositionOf(tree.volume, extent.partition, extent.position, extent.Bytes());
    if (!position || extent.Type() != UdfExtentType::kRecorded) return std::nullopt;
    const auto wanted = std::min<ULONGLONG>(extent.Bytes(), length - data.size());
    m_completeness.NoteExtent(*position, wanted);
    const auto part = ReadWhole(m_source, *position, static_cast<DWORD>(wanted));
    data.insert(data.end(), part.begin(), part.end());
  }
  if (data.size() < length) return std::nullopt;
  return data;
}

std::optional<UdfAllocation> UdfScan::AllocationOf(const UdfFileEntry& entry, const Tree& tree) {
  if (!m_guard.CountAllocation(entry.allocation.size())) return std::nullopt;
  const bool embedded = entry.allocationType == kUdfEmbedded;
  if (embedded) return UdfAllocation{tree.volume, true, {}, entry.allocation};
  if (!FollowExtents(entry.allocation, entry.allocationType, tree)) return std::nullopt;
  return UdfAllocation{tree.volume, false, m_extents, {}};
}

bool UdfScan::FollowExtents(std::span<const BYTE> descriptors, BYTE type, const Tree& tree) {
  m_extents.clear();
  if (!DecodeExtents(descriptors, type, tree.partition, m_extents)) return false;
  std::ptrdiff_t checked = 0;
  for (int hops = 0;; ++hops) {
    const auto found = std::find_if(m_extents.begin() + checked, m_extents.end(), IsContinuation);
    if (found == m_extents.end()) return true;
    if (hops == kMostContinuations) return false;
    const UDFEXTENT continuation = *found;
    // ECMA-167 4/12: it ends the descriptors of its extent.
    checked = found - m_extents.begin();
    m_extents.erase(found, m_extents.end());
    if (!ReadContinuation(continuation, type, tree)) return false;
  }
}

bool UdfScan::ReadContinuation(const UDFEXTENT& continuation, BYTE type, const Tree& tree) {
  // Counted by what is read, so that circles end.
  const DWORD length = continuation.Bytes();
  if (length > kLongestEntry || !m_guard.CountAllocation(length)) return false;
  const auto bytes = m_volumes.ReadExtent(m_source, tree.volume, continuation.partition,
                                          continuation.position, length);
  const auto descriptors = bytes ? DecodeAllocationExtent(*bytes) : std::nullopt;
  return descriptors && DecodeExtents(*descriptors, type, tree.partition, m_extents);
}

}  // namespace morvunp::iso
