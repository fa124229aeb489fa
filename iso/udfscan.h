// The walk over the file structure of a UDF image (ECMA-167 part 4).
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "iso/completeness.h"
#include "iso/copy.h"
#include "iso/itemlist.h"
#include "iso/recorddate.h"
#include "iso/scanguard.h"
#include "iso/udfvolume.h"

namespace morvunp::iso {

/// Appends every item of every logical volume to a list, in depth-first
/// pre-order.
class UdfScan {
 public:
  UdfScan(ByteSource& source, UdfVolumes& volumes, ItemList& items)
      : m_source(source),
        m_volumes(volumes),
        m_items(items),
        m_guard(source.Size()),
        m_completeness(source.Size()) {}

  /// True when at least the first volume was listed completely. The first
  /// unusable structure ends the scan; what was listed before it stays. Throws
  /// CAtlException for an impossible date and CInvalidArgException for a
  /// reference to a partition that does not exist.
  bool InitScanUDF();
  /// kCutShort when data of a file lies beyond the image's end; kDamaged when a
  /// later volume was unusable or a folder was not entered.
  morvunp::ItemReason Problem() const { return m_completeness.Problem(); }

 private:
  /// What is handed down a volume's tree.
  struct Tree {
    int volume;
    /// Partition of short allocation descriptors: that of the root's ICB.
    WORD partition;
  };

  bool ScanVolume(int volume);
  bool ScanRoot(int volume, const UDFICB& icb);
  /// The file entry that an ICB leads to; none when it is unusable. It points
  /// into the window and is valid until the next read through it.
  std::optional<UdfFileEntry> ReadEntry(int volume, const UDFICB& icb);

  bool ReadDirUDF(std::wstring_view name, const UdfFileEntry& entry, const UDFICB& icb,
                  const Tree& tree, bool hidden, ItemIndex parent);
  bool ReadInfoFileUDF(std::wstring_view name, const UdfFileEntry& entry, const Tree& tree,
                       bool hidden, ItemIndex parent);
  UdfDetails& AppendItem(std::wstring_view name, const UdfFileEntry& entry, bool hidden,
                         ItemIndex parent);

  bool ReadContents(const UdfFileEntry& entry, const UDFICB& icb, const Tree& tree,
                    ItemIndex folder);
  bool ReadIdentifiers(std::span<const BYTE> bytes, const Tree& tree, ItemIndex folder);
  bool ReadChild(const UdfFileIdentifier& identifier, const Tree& tree, ItemIndex folder);
  std::optional<std::vector<BYTE>> ReadFolderData(const UdfFileEntry& entry, const Tree& tree);

  /// Valid as long as the entry and until the next call.
  std::optional<UdfAllocation> AllocationOf(const UdfFileEntry& entry, const Tree& tree);
  /// Collects all extents that descriptors lead to, those of continuation
  /// extents in their place.
  bool FollowExtents(std::span<const BYTE> descriptors, BYTE type, const Tree& tree);
  /// Whether the data of a file is in the image.
  void NoteExtents(ULONGLONG length, const Tree& tree);
  bool ReadContinuation(const UDFEXTENT& continuation, BYTE type, const Tree& tree);

  ByteSource& m_source;
  /// File entries lie close together and are read through one buffer.
  CopyBuffer m_window;
  UdfVolumes& m_volumes;
  ItemList& m_items;
  ScanGuard m_guard;
  Completeness m_completeness;
  DateConverter m_datesModified;
  DateConverter m_datesAccessed;
  /// The extents and the name read last.
  std::vector<UDFEXTENT> m_extents;
  std::wstring m_name;
};

}  // namespace morvunp::iso
