#include "sevenzip/copycoder.h"

#include <algorithm>

namespace sevenzip = morvunp::sevenzip;

namespace NCompress {
namespace {

constexpr DWORD kBufferSize = 131072;

HRESULT WriteAll(sevenzip::ISequentialOutStream& out, const BYTE* data, DWORD size) {
  while (size > 0) {
    DWORD written = 0;
    const HRESULT result = out.Write(data, size, &written);
    if (result != S_OK) return result;
    if (written == 0) return E_FAIL;
    data += written;
    size -= written;
  }
  return S_OK;
}

}  // namespace

CCopyCoder::~CCopyCoder() { VirtualFree(m_pBuffer, 0, MEM_RELEASE); }

HRESULT CCopyCoder::Code(sevenzip::ISequentialInStream* in, sevenzip::ISequentialOutStream* out,
                         const ULONGLONG*, const ULONGLONG* outSize,
                         sevenzip::ICompressProgressInfo* progress) {
  if (m_pBuffer == nullptr) {
    m_pBuffer = static_cast<BYTE*>(VirtualAlloc(nullptr, kBufferSize, MEM_COMMIT, PAGE_READWRITE));
    if (m_pBuffer == nullptr) return E_OUTOFMEMORY;
  }
  m_nCopied = 0;
  for (;;) {
    ULONGLONG wanted = kBufferSize;
    if (outSize != nullptr) wanted = std::min(wanted, *outSize - m_nCopied);
    DWORD read = 0;
    HRESULT result = in->Read(m_pBuffer, static_cast<DWORD>(wanted), &read);
    if (result != S_OK || read == 0) return result;
    if (out != nullptr) result = WriteAll(*out, m_pBuffer, read);
    if (result != S_OK) return result;
    m_nCopied += read;
    if (progress != nullptr) result = progress->SetRatioInfo(&m_nCopied, &m_nCopied);
    if (result != S_OK) return result;
  }
}

HRESULT CCopyCoder::GetInStreamProcessedSize(ULONGLONG* size) {
  *size = m_nCopied;
  return S_OK;
}

}  // namespace NCompress

namespace morvunp::sevenzip {

CLocalProgress::CLocalProgress(IProgress* progress, bool inSizeIsMain)
    : m_pProgress(progress),
      m_pRatioProgress(m_pProgress.Query<ICompressProgressInfo>()),
      m_bInSizeIsMain(inSizeIsMain) {}

HRESULT CLocalProgress::SetRatioInfo(const ULONGLONG* inSize, const ULONGLONG* outSize) {
  ULONGLONG in = m_nInSize + (inSize != nullptr ? *inSize : 0);
  ULONGLONG out = m_nOutSize + (outSize != nullptr ? *outSize : 0);
  if (m_bSendRatio && m_pRatioProgress) {
    const HRESULT result = m_pRatioProgress->SetRatioInfo(&in, &out);
    if (result != S_OK) return result;
  }
  in += m_nProgressOffset;
  out += m_nProgressOffset;
  return m_bSendProgress ? m_pProgress->SetCompleted(m_bInSizeIsMain ? &in : &out) : S_OK;
}

}  // namespace morvunp::sevenzip
