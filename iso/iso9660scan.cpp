#include "iso/iso9660scan.h"

#include <algorithm>
#include <optional>

namespace morvunp::iso {
namespace {

// ECMA-119 6.8.2.2: the directory itself and its parent come first.
constexpr int kSpecialRecords = 2;

/// Steps through the records of a directory's bytes.
class RecordReader {
 public:
  RecordReader(std::span<const BYTE> bytes, DWORD blockSize)
      : m_bytes(bytes), m_nBlockSize(blockSize) {}

  /// None at the end of the directory, which is also where it is damaged.
  std::optional<DirectoryRecord> Next() {
    if (!SkipPadding()) return std::nullopt;
    auto record = DecodeDirectoryRecord(m_bytes.subspan(m_nOffset));
    if (record) m_nOffset += record->recordLength;
    m_bDamaged = !record;
    return record;
  }

  /// The directory ended at a record that cannot be one.
  bool IsDamaged() const { return m_bDamaged; }

 private:
  /// A zero byte says that the rest of this logical block is padding. True
  /// when a record follows.
  bool SkipPadding() {
    if (m_nOffset < m_bytes.size() && m_bytes[m_nOffset] == 0) {
      m_nOffset += m_nBlockSize - m_nOffset % m_nBlockSize;
    }
    return m_nOffset < m_bytes.size() && m_bytes[m_nOffset] != 0;
  }

  std::span<const BYTE> m_bytes;
  DWORD m_nBlockSize;
  std::size_t m_nOffset = 0;
  bool m_bDamaged = false;
};

}  // namespace

void Iso9660Scan::InitScanISO9660(DWORD location, DWORD length, ItemIndex folder) {
  const ULONGLONG offset = ULONGLONG{m_nBlockSize} * location;
  const auto most = static_cast<DWORD>(std::min<ULONGLONG>(length, m_guard.Room()));
  const std::uint32_t available = AvailableLength(m_source, offset, most);
  m_completeness.NoteExtent(offset, length);
  if (!m_guard.Enter(location, available, m_items.PathLengthOf(folder))) {
    m_completeness.NoteGap();
    return;
  }
  const auto bytes = ReadWhole(m_source, offset, available);
  RecordReader records(bytes, m_nBlockSize);
  int seen = 0;
  for (auto record = records.Next(); record; record = records.Next()) {
    if (++seen > kSpecialRecords && !AddItem(*record, folder)) break;
  }
  m_guard.Leave(available);
  const bool whole = bytes.size() == length && seen >= kSpecialRecords && !records.IsDamaged();
  if (!whole) m_completeness.NoteGap();
}

bool Iso9660Scan::AddItem(const DirectoryRecord& record, ItemIndex folder) {
  const __time64_t modified = m_dates.TimeOf(record.date);
  GetNameItemISO9660(record, m_name);
  if (!m_guard.CountPath(m_items.PathLengthOf(folder) + m_name.size())) {
    m_completeness.NoteGap();
    return false;
  }
  CIsoItemInfo& item = m_items.Append(m_name, folder);
  item.m_bFolder = record.directory ? 1 : 0;
  item.m_bHidden = record.hidden ? 1 : 0;
  item.m_nLocation = record.location;
  item.m_nSize = record.dataLength;
  item.m_timeModified = modified;
  if (record.directory) {
    InitScanISO9660(record.location, record.dataLength, m_items.Last());
  } else {
    m_completeness.NoteExtent(ULONGLONG{m_nBlockSize} * record.location, record.dataLength);
  }
  return true;
}

}  // namespace morvunp::iso
