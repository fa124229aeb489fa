#include "sevenzip/splithandler.h"

#include <iterator>

#include "sevenzip/copycoder.h"
#include "sevenzip/guarded.h"
#include "sevenzip/multistream.h"
#include "sevenzip/property.h"
#include "sevenzip/volumesequence.h"

namespace sevenzip = morvunp::sevenzip;

namespace NArchive::NSplit {
namespace {

using sevenzip::Property;
using sevenzip::Put;

struct PropertyInfo {
  PROPID id;
  VARTYPE type;
};

constexpr PropertyInfo kItemProperties[]{{sevenzip::kpidPath, VT_BSTR},
                                         {sevenzip::kpidSize, VT_UI8}};
constexpr PropertyInfo kArchiveProperties[]{{sevenzip::kpidNumVolumes, VT_UI4}};

template <std::size_t count>
HRESULT Tell(const PropertyInfo (&table)[count], DWORD index, BSTR* name, PROPID* id,
             VARTYPE* type) {
  if (index >= count) return E_INVALIDARG;
  *name = nullptr;
  *id = table[index].id;
  *type = table[index].type;
  return S_OK;
}

}  // namespace

HRESULT CHandler::Open(IInStream* stream, const ULONGLONG*, IArchiveOpenCallback* callback) {
  Close();
  if (callback == nullptr) return S_FALSE;
  const auto volumes = ComPtr<IArchiveOpenCallback>(callback).Query<IArchiveOpenVolumeCallback>();
  if (!volumes) return S_FALSE;
  return sevenzip::Guarded([&] { return OpenVolumes(stream, *callback, *volumes.Get()); });
}

HRESULT CHandler::OpenVolumes(IInStream* first, IArchiveOpenCallback& callback,
                              IArchiveOpenVolumeCallback& volumes) {
  Property name;
  HRESULT result = volumes.GetProperty(sevenzip::kpidName, name.Receive());
  if (result != S_OK) return result;
  if (name.Type() != VT_BSTR) return S_FALSE;
  auto sequence = sevenzip::CVolumeSequence::OfFirstVolume(name.Text());
  if (!sequence) return S_FALSE;
  m_strSubName = sequence->SetName();
  result = AddVolume(first, callback, volumes);
  while (result == S_OK) {
    ComPtr<IInStream> next;
    result = volumes.GetStream(sequence->GetNextName().c_str(), next.Receive());
    if (result == S_FALSE) return S_OK;
    if (result == S_OK) result = AddVolume(next.Get(), callback, volumes);
  }
  return result;
}

HRESULT CHandler::AddVolume(IInStream* stream, IArchiveOpenCallback& callback,
                            IArchiveOpenVolumeCallback& volumes) {
  Property size;
  const HRESULT result = volumes.GetProperty(sevenzip::kpidSize, size.Receive());
  if (result != S_OK) return result;
  if (size.Type() != VT_UI8) return E_INVALIDARG;
  m_nTotalSize += size.Number64();
  m_arrSizes.push_back(size.Number64());
  m_arrStreams.emplace_back(stream);
  const ULONGLONG count = m_arrStreams.size();
  return callback.SetCompleted(&count, nullptr);
}

HRESULT CHandler::Close() {
  m_arrSizes.clear();
  m_arrStreams.clear();
  m_nTotalSize = 0;
  return S_OK;
}

HRESULT CHandler::GetNumberOfItems(DWORD* count) {
  *count = m_arrStreams.empty() ? 0 : 1;
  return S_OK;
}

HRESULT CHandler::GetProperty(DWORD, PROPID id, PROPVARIANT* value) {
  *value = {};
  if (id == sevenzip::kpidPath) Put(value, m_strSubName);
  if (id == sevenzip::kpidSize || id == sevenzip::kpidPackSize) Put(value, m_nTotalSize);
  return S_OK;
}

HRESULT CHandler::GetArchiveProperty(PROPID id, PROPVARIANT* value) {
  *value = {};
  if (id == sevenzip::kpidMainSubfile) Put(value, DWORD{0});
  if (id == sevenzip::kpidNumVolumes) Put(value, static_cast<DWORD>(m_arrStreams.size()));
  return S_OK;
}

HRESULT CHandler::GetNumberOfProperties(DWORD* count) {
  *count = static_cast<DWORD>(std::size(kItemProperties));
  return S_OK;
}

HRESULT CHandler::GetPropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) {
  return Tell(kItemProperties, index, name, id, type);
}

HRESULT CHandler::GetNumberOfArchiveProperties(DWORD* count) {
  *count = static_cast<DWORD>(std::size(kArchiveProperties));
  return S_OK;
}

HRESULT CHandler::GetArchivePropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) {
  return Tell(kArchiveProperties, index, name, id, type);
}

HRESULT CHandler::GetStream(DWORD index, sevenzip::ISequentialInStream** stream) {
  if (index != 0) return E_INVALIDARG;
  *stream = nullptr;
  return sevenzip::Guarded([&] {
    std::vector<sevenzip::CMultiStream::CSubStreamInfo> volumes(m_arrStreams.size());
    for (std::size_t i = 0; i < volumes.size(); ++i) {
      volumes[i].pStream = m_arrStreams[i];
      volumes[i].nVolumeSize = m_arrSizes[i];
    }
    auto joined = sevenzip::Create<sevenzip::CMultiStream>();
    const HRESULT result = joined->Init(std::move(volumes));
    if (result == S_OK) *stream = joined.Detach();
    return result;
  });
}

HRESULT CHandler::Extract(const DWORD* indices, DWORD count, LONG testMode,
                          IArchiveExtractCallback* callback) {
  if (count == 0) return S_OK;
  if (count != sevenzip::kAllItems && (count != 1 || indices[0] != 0)) return E_INVALIDARG;
  HRESULT result = callback->SetTotal(m_nTotalSize);
  if (result != S_OK) return result;
  const LONG askMode = testMode != 0 ? sevenzip::kAskTest : sevenzip::kAskExtract;
  ComPtr<sevenzip::ISequentialOutStream> out;
  result = callback->GetStream(0, out.Receive(), askMode);
  if (result != S_OK) return result;
  if (testMode == 0 && !out) return S_OK;
  result = callback->PrepareOperation(askMode);
  if (result == S_OK) {
    result = sevenzip::Guarded([&] { return CopyVolumes(out.Get(), *callback); });
  }
  if (result != S_OK) return result;
  out.Reset();
  return callback->SetOperationResult(0);
}

HRESULT CHandler::CopyVolumes(sevenzip::ISequentialOutStream* out,
                              IArchiveExtractCallback& callback) {
  const auto coder = sevenzip::Create<NCompress::CCopyCoder>();
  const auto progress = sevenzip::Create<sevenzip::CLocalProgress>(&callback, false);
  ULONGLONG copied = 0;
  for (const ComPtr<IInStream>& volume : m_arrStreams) {
    progress->m_nInSize = progress->m_nOutSize = copied;
    HRESULT result = progress->SetRatioInfo(nullptr, nullptr);
    if (result == S_OK) result = volume->Seek(0, sevenzip::kSeekStart, nullptr);
    if (result == S_OK) result = coder->Code(volume.Get(), out, nullptr, nullptr, progress.Get());
    if (result != S_OK) return result;
    ULONGLONG size = 0;
    coder->GetInStreamProcessedSize(&size);
    copied += size;
  }
  return S_OK;
}

}  // namespace NArchive::NSplit
