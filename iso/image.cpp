#include "iso/image.h"

#include <algorithm>

#include "frame/filesystem.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "iso/iso9660scan.h"
#include "iso/recognition.h"
#include "iso/udfscan.h"

namespace morvunp::iso {
namespace {

/// 0 when the file cannot be opened.
int OpenForReading(const std::wstring& path) {
  int descriptor = 0;
  const int error =
      _wsopen_s(&descriptor, path.c_str(), _O_RDONLY | _O_BINARY, _SH_DENYWR, _S_IREAD);
  return error == 0 ? descriptor : 0;
}

/// Closes a descriptor when it goes.
struct Descriptor {
  explicit Descriptor(int descriptor) : number(descriptor) {}
  ~Descriptor() {
    if (number != 0) _close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number;
};

FileSystem FileSystemOf(const std::wstring& path) {
  const Descriptor file(OpenForReading(path));
  if (file.number == 0) return FileSystem::kNone;
  DescriptorSource source(file.number);
  return RecogniseFileSystem(source);
}

}  // namespace

Image::~Image() { Close(); }

bool Image::Open(const std::wstring& path) {
  Close();
  m_problem = morvunp::ItemReason::kNone;
  if (path.empty()) return false;
  CheckIsoImage(path);
  if (m_bUDF) m_volumes.RemoveUDFAllItems();
  frame::ForgetStop(m_state);
  const bool opened = m_bISO9660 ? OpenISO9660(path) : m_bUDF && OpenUDF(path);
  if (!opened) return false;
  m_items.RemoveAllItems();
  return Scan() && !frame::WasInterrupted(m_state);
}

bool Image::Scan() {
  // It stays so when an impossible date ends the scan.
  m_problem = morvunp::ItemReason::kDamaged;
  if (m_bISO9660) {
    Iso9660Scan scan(*m_pSource, m_nBlockSize, m_items);
    scan.InitScanISO9660(m_nRootLocation, m_nRootLength, kRoot);
    m_problem = scan.Problem();
    return true;
  }
  UdfScan scan(*m_pSource, m_volumes, m_items);
  const bool listed = scan.InitScanUDF();
  m_problem = scan.Problem();
  return listed;
}

bool Image::Close() {
  if (m_nFile == 0) return true;
  if (_close(m_nFile) != 0) return false;
  m_nFile = 0;
  m_pSource.reset();
  return true;
}

void Image::CheckIsoImage(const std::wstring& path) {
  m_bISO9660 = false;
  m_bUDF = false;
  const FileSystem found = FileSystemOf(path);
  m_bISO9660 = found == FileSystem::kISO9660;
  m_bUDF = found == FileSystem::kUDF;
}

bool Image::OpenDescriptor(const std::wstring& path) {
  m_nFile = OpenForReading(path);
  if (m_nFile == 0) return false;
  m_pSource = std::make_unique<DescriptorSource>(
      m_nFile, [this] { return frame::MayGoOnMeanwhile(m_state); });
  return true;
}

bool Image::OpenISO9660(const std::wstring& path) {
  if (!OpenDescriptor(path)) return false;
  const auto descriptor = FindPrimaryVolumeDescriptor(*m_pSource);
  if (!descriptor) return false;
  m_nBlockSize = descriptor->blockSize;
  m_nRootLocation = descriptor->rootLocation;
  m_nRootLength = descriptor->rootLength;
  return true;
}

bool Image::OpenUDF(const std::wstring& path) {
  return OpenDescriptor(path) && m_volumes.Open(*m_pSource);
}

ULONGLONG Image::PackedSizeOf(const CIsoItemInfo& item) const {
  const UdfDetails* const details = m_items.DetailsOf(item);
  if (details == nullptr || details->m_nBlocksRecorded == 0) return item.m_nSize;
  return details->m_nBlocksRecorded * m_volumes.SectorSize();
}

std::wstring Image::TextOf(frame::Totals totals) {
  std::wstring path;
  for (bool more = m_items.FindFile(); more;) {
    more = m_items.FindNextFile();
    const CIsoItemInfo& item = *m_items.Current();
    // Most items are files, and only a folder's text asks where they are.
    if (item.m_bFolder != 0 || !totals.CountsAll()) m_items.GetPath(item, path);
    if (item.m_bFolder != 0) {
      totals.AddFolder(path);
    } else {
      totals.AddFile(path, item.m_nSize, PackedSizeOf(item));
    }
  }
  return totals.Text();
}

platform::FileIdentity Image::Identity() const {
  return platform::IdentityOf(reinterpret_cast<HANDLE>(_get_osfhandle(m_nFile)));
}

bool Image::Interrupt(output::Root& root) {
  root.Out().Remove();
  return root.Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kInterrupted);
}

bool Image::WriteItem(const CIsoItemInfo& item, output::Root& root, CUnpackState& state) {
  const CopyBuffer::Lease lease(m_buffer);
  OutputFile output(root, state, item.m_nSize);
  switch (CopyItem(item, output)) {
    case CopyResult::kDone:
      break;
    case CopyResult::kFailed:
      root.Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kDamaged);
      root.Out().KeepBroken();
      return false;
    case CopyResult::kCancelled:
      return Interrupt(root);
  }
  output::FileFacts facts{platform::FileTimeOfTimespec(item.m_timeModified, 0), std::nullopt};
  if (item.m_bHidden != 0) facts.attributes = FILE_ATTRIBUTE_HIDDEN;
  if (root.Out().RefuseDefect(output.Defect())) return false;
  if (root.Out().Finish(facts, output.Defect())) return true;
  root.Out().KeepBroken();
  return false;
}

CopyResult Image::CopyItem(const CIsoItemInfo& item, OutputFile& output) {
  const UdfDetails* const details = m_items.DetailsOf(item);
  if (details != nullptr) return CopyUDF(details->m_allocation, output);
  return CopyExtent(*m_pSource, m_buffer, ULONGLONG{m_nBlockSize} * item.m_nLocation, item.m_nSize,
                    output);
}

CopyResult Image::CopyUDF(const UdfAllocation& allocation, OutputFile& output) {
  if (allocation.m_bDataInICB) {
    const std::span<const BYTE> data = allocation.m_arrData;
    return output.WriteAtOnce(
        data.first(static_cast<std::size_t>(std::min<ULONGLONG>(data.size(), output.Remaining()))));
  }
  for (const UDFEXTENT& extent : allocation.m_arrExtents) {
    const CopyResult result = CopyUDFExtent(allocation.m_nLogicalVolume, extent, output);
    if (result != CopyResult::kDone) return result;
  }
  return output.Finish();
}

CopyResult Image::CopyUDFExtent(int volume, const UDFEXTENT& extent, OutputFile& output) {
  const ULONGLONG length = std::min<ULONGLONG>(extent.Bytes(), output.Remaining());
  if (length == 0) return CopyResult::kDone;
  if (extent.Type() != UdfExtentType::kRecorded) return output.Skip(length);
  if (!m_volumes.HasPartition(volume, extent.partition)) return CopyResult::kFailed;
  const auto position =
      m_volumes.PositionOf(volume, extent.partition, extent.position, extent.Bytes());
  if (!position) return CopyResult::kFailed;
  return CopyExtent(*m_pSource, m_buffer, *position, length, output);
}

}  // namespace morvunp::iso
