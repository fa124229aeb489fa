// An open image: its file, what it was recognised as, and its items.
#pragma once

#include <memory>
#include <string>

#include "frame/filesystem.h"
#include "frame/summary.h"
#include "iso/bytesource.h"
#include "iso/copy.h"
#include "iso/itemlist.h"
#include "iso/udfvolume.h"
#include "output/root.h"

namespace morvunp::iso {

class Image {
 public:
  /// `state` is the unpacker's, whose user may interrupt while the image is read.
  explicit Image(CUnpackState& state) : m_state(state) {}
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  /// Closes what is open, recognises the file, opens it and lists its items.
  /// Throws CAtlException when a recorded date is impossible and
  /// CInvalidArgException when a UDF structure names a partition that does not
  /// exist.
  bool Open(const std::wstring& path);
  /// True when nothing was open or the file closed. The items stay.
  bool Close();
  /// Sets m_bISO9660, m_bUDF or neither.
  void CheckIsoImage(const std::wstring& path);

  ItemList& Items() { return m_items; }
  const ItemList& Items() const { return m_items; }
  void RemoveUDFAllItems() { m_volumes.RemoveUDFAllItems(); }
  bool IsOpen() const { return m_nFile != 0; }

  /// kCutShort when data of an item or a directory lies beyond the image's end,
  /// kDamaged when a directory could not be read whole otherwise.
  morvunp::ItemReason Problem() const { return m_problem; }

  /// Bytes that an item occupies. ISO 9660 packs nothing. UDF: bytes in the
  /// recorded blocks, or the size when none are recorded.
  ULONGLONG PackedSizeOf(const CIsoItemInfo& item) const;

  /// The summary text of what `totals` counts. Moves the cursor to the end.
  std::wstring TextOf(frame::Totals totals);

  /// Writes an item's data to the file that is open in `root` and finishes it.
  /// False when the copy failed, leaving what was written, or was cancelled,
  /// leaving no file.
  bool WriteItem(const CIsoItemInfo& item, output::Root& root, CUnpackState& state);
  /// The image's file.
  platform::FileIdentity Identity() const;
  /// The buffer of all copies; lease it for a run.
  CopyBuffer& Buffer() { return m_buffer; }

 private:
  bool OpenISO9660(const std::wstring& path);
  bool OpenUDF(const std::wstring& path);
  bool Scan();
  bool OpenDescriptor(const std::wstring& path);
  static bool Interrupt(output::Root& root);
  CopyResult CopyItem(const CIsoItemInfo& item, OutputFile& output);
  CopyResult CopyUDF(const UdfAllocation& allocation, OutputFile& output);
  CopyResult CopyUDFExtent(int volume, const UDFEXTENT& extent, OutputFile& output);

  CUnpackState& m_state;
  /// C runtime descriptor; 0 when no image is open.
  int m_nFile = 0;
  std::unique_ptr<DescriptorSource> m_pSource;
  bool m_bISO9660 = false;
  bool m_bUDF = false;
  DWORD m_nBlockSize = 0;
  DWORD m_nRootLocation = 0;
  DWORD m_nRootLength = 0;
  UdfVolumes m_volumes;
  ItemList m_items;
  morvunp::ItemReason m_problem = morvunp::ItemReason::kNone;
  CopyBuffer m_buffer;
};

}  // namespace morvunp::iso
