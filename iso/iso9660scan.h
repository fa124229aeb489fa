// The walk over an ISO 9660 directory tree.
#pragma once

#include <string>

#include "iso/bytesource.h"
#include "iso/completeness.h"
#include "iso/iso9660.h"
#include "iso/itemlist.h"
#include "iso/recorddate.h"
#include "iso/scanguard.h"

namespace morvunp::iso {

/// Appends every item below a root to a list, in depth-first pre-order.
/// Directories that cannot be read add nothing, but the scan remembers.
class Iso9660Scan {
 public:
  Iso9660Scan(ByteSource& source, DWORD blockSize, ItemList& items)
      : m_source(source),
        m_nBlockSize(blockSize),
        m_items(items),
        m_guard(source.Size()),
        m_completeness(source.Size()) {}

  /// Adds the items of one directory extent and of every folder below it.
  /// Throws CAtlException for an impossible recording date; the items before
  /// it stay in the list.
  void InitScanISO9660(DWORD location, DWORD length, ItemIndex folder);
  /// kCutShort when something lies beyond the image's end; kDamaged when a
  /// directory could not be read whole otherwise or was not entered.
  morvunp::ItemReason Problem() const { return m_completeness.Problem(); }

 private:
  /// False when the folder's listing ends here.
  bool AddItem(const DirectoryRecord& record, ItemIndex folder);

  ByteSource& m_source;
  DWORD m_nBlockSize;
  ItemList& m_items;
  ScanGuard m_guard;
  Completeness m_completeness;
  DateConverter m_dates;
  /// The name read last.
  std::wstring m_name;
};

}  // namespace morvunp::iso
