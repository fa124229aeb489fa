// Split sets as an archive of one item, behind the engine's own interfaces.
#pragma once

#include <string>
#include <vector>

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace NArchive::NSplit {

using morvunp::sevenzip::ComPtr;
using morvunp::sevenzip::IArchiveExtractCallback;
using morvunp::sevenzip::IArchiveOpenCallback;
using morvunp::sevenzip::IArchiveOpenVolumeCallback;
using morvunp::sevenzip::IInStream;

/// Plain pieces of one file. Open finds them through the open callback's
/// IArchiveOpenVolumeCallback; GetStream joins them.
class CHandler final : public morvunp::sevenzip::Component<
                           morvunp::sevenzip::Answers<morvunp::sevenzip::IInArchive,
                                                      morvunp::sevenzip::IInArchiveGetStream>,
                           morvunp::sevenzip::IInArchive, morvunp::sevenzip::IInArchiveGetStream> {
 public:
  /// S_FALSE when the callback finds no volumes or the file it knows is not
  /// named like a first volume. The first volume that is missing ends the set.
  HRESULT Open(IInStream* stream, const ULONGLONG* maxCheckStartPosition,
               IArchiveOpenCallback* callback) override;
  HRESULT Close() override;
  HRESULT GetNumberOfItems(DWORD* count) override;
  HRESULT GetProperty(DWORD index, PROPID id, PROPVARIANT* value) override;
  HRESULT Extract(const DWORD* indices, DWORD count, LONG testMode,
                  IArchiveExtractCallback* callback) override;
  HRESULT GetArchiveProperty(PROPID id, PROPVARIANT* value) override;
  HRESULT GetNumberOfProperties(DWORD* count) override;
  HRESULT GetPropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) override;
  HRESULT GetNumberOfArchiveProperties(DWORD* count) override;
  HRESULT GetArchivePropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) override;

  /// The joined stream, which keeps the volumes open.
  HRESULT GetStream(DWORD index, morvunp::sevenzip::ISequentialInStream** stream) override;
  /// The last volume that was found is as long as the first.
  bool IsLastFull() const { return !m_arrSizes.empty() && m_arrSizes.back() == m_arrSizes.front(); }

 private:
  HRESULT OpenVolumes(IInStream* first, IArchiveOpenCallback& callback,
                      IArchiveOpenVolumeCallback& volumes);
  HRESULT AddVolume(IInStream* stream, IArchiveOpenCallback& callback,
                    IArchiveOpenVolumeCallback& volumes);
  HRESULT CopyVolumes(morvunp::sevenzip::ISequentialOutStream* out,
                      IArchiveExtractCallback& callback);

  std::wstring m_strSubName;
  std::vector<ComPtr<IInStream>> m_arrStreams;
  std::vector<ULONGLONG> m_arrSizes;
  ULONGLONG m_nTotalSize = 0;
};

}  // namespace NArchive::NSplit
