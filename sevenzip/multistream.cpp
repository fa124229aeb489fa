#include "sevenzip/multistream.h"

#include <algorithm>

namespace morvunp::sevenzip {

HRESULT CMultiStream::Init(std::vector<CSubStreamInfo> volumes) {
  ULONGLONG offset = 0;
  for (CSubStreamInfo& volume : volumes) {
    volume.nGlobalOffset = offset;
    offset += volume.nVolumeSize;
    const HRESULT result = volume.pStream->Seek(0, kSeekCurrent, &volume.nLocalPos);
    if (result != S_OK) return result;
  }
  m_arrStreams = std::move(volumes);
  m_nTotalLength = offset;
  m_nPos = 0;
  m_nStreamIndex = 0;
  return S_OK;
}

/// By halving. The position lies inside the joined stream.
CMultiStream::CSubStreamInfo& CMultiStream::VolumeAtPosition() {
  LONG left = 0;
  auto right = static_cast<LONG>(m_arrStreams.size());
  for (LONG probe = m_nStreamIndex;; probe = (left + right) / 2) {
    CSubStreamInfo& volume = m_arrStreams[static_cast<std::size_t>(probe)];
    if (m_nPos < volume.nGlobalOffset) {
      right = probe;
    } else if (m_nPos >= volume.nGlobalOffset + volume.nVolumeSize) {
      left = probe + 1;
    } else {
      m_nStreamIndex = probe;
      return volume;
    }
  }
}

HRESULT CMultiStream::Read(void* data, DWORD size, DWORD* processed) {
  if (processed != nullptr) *processed = 0;
  if (size == 0) return S_OK;
  if (m_nPos >= m_nTotalLength) return m_nPos == m_nTotalLength ? S_OK : E_FAIL;
  CSubStreamInfo& volume = VolumeAtPosition();
  const ULONGLONG local = m_nPos - volume.nGlobalOffset;
  if (local != volume.nLocalPos) {
    const HRESULT result =
        volume.pStream->Seek(static_cast<LONGLONG>(local), kSeekStart, &volume.nLocalPos);
    if (result != S_OK) return result;
  }
  const ULONGLONG wanted = std::min<ULONGLONG>(size, volume.nVolumeSize - local);
  DWORD read = 0;
  const HRESULT result = volume.pStream->Read(data, static_cast<DWORD>(wanted), &read);
  m_nPos += read;
  volume.nLocalPos += read;
  if (processed != nullptr) *processed = read;
  return result;
}

HRESULT CMultiStream::Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) {
  const auto distance = static_cast<ULONGLONG>(offset);
  switch (origin) {
    case kSeekStart:
      m_nPos = distance;
      break;
    case kSeekCurrent:
      m_nPos += distance;
      break;
    case kSeekEnd:
      m_nPos = m_nTotalLength + distance;
      break;
    default:
      return STG_E_INVALIDFUNCTION;
  }
  if (position != nullptr) *position = m_nPos;
  return S_OK;
}

}  // namespace morvunp::sevenzip
