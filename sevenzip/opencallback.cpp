#include "sevenzip/opencallback.h"

#include <algorithm>

#include "frame/itempath.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/guarded.h"
#include "sevenzip/property.h"
#include "sevenzip/startheader.h"

namespace morvunp::sevenzip {

bool C7zmvOpenCallback::Init(const std::wstring& firstVolume) {
  m_strFolderPrefix = firstVolume.substr(0, firstVolume.rfind(frame::kSeparator) + 1);
  return LookUp(firstVolume);
}

bool C7zmvOpenCallback::LookUp(const std::wstring& path) {
  const HANDLE search = FindFirstFileW(path.c_str(), &m_volumeInfo);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

void C7zmvOpenCallback::Begin(CInFileStream& first) {
  m_nMissing = LengthOfArchive(first).value_or(0);
  first.Seek(0, kSeekStart, nullptr);
  TakeLength(first);
}

void C7zmvOpenCallback::TakeLength(CInFileStream& volume) {
  ULONGLONG length = 0;
  volume.GetSize(&length);
  m_nMissing -= std::min(m_nMissing, length);
}

/// Where the host says that a volume is which is not beside the first one.
std::wstring C7zmvOpenCallback::PathOf(const wchar_t* name) const {
  std::wstring path = m_strFolderPrefix + name;
  const auto& ask = m_state.m_options.onMissingVolume;
  if (!ask || m_nMissing == 0 || GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
    return path;
  return ask(name).value_or(path);
}

HRESULT C7zmvOpenCallback::GetProperty(PROPID id, PROPVARIANT* value) {
  *value = {};
  const DWORD attributes = m_volumeInfo.dwFileAttributes;
  switch (id) {
    case kpidName:
      Put(value, std::wstring(m_volumeInfo.cFileName));
      break;
    case kpidIsDir:
      PutBool(value, (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
      break;
    case kpidSize:
      Put(value, ULONGLONG{m_volumeInfo.nFileSizeHigh} << 32 | m_volumeInfo.nFileSizeLow);
      break;
    case kpidAttrib:
      Put(value, attributes);
      break;
    case kpidCTime:
      Put(value, m_volumeInfo.ftCreationTime);
      break;
    case kpidATime:
      Put(value, m_volumeInfo.ftLastAccessTime);
      break;
    case kpidMTime:
      Put(value, m_volumeInfo.ftLastWriteTime);
      break;
    default:
      break;
  }
  return S_OK;
}

HRESULT C7zmvOpenCallback::GetStream(const wchar_t* name, IInStream** stream) {
  *stream = nullptr;
  return Guarded([&]() -> HRESULT {
    const std::wstring path = PathOf(name);
    if (!LookUp(path)) return S_FALSE;
    if ((m_volumeInfo.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return S_FALSE;
    auto file = Create<CInFileStream>(m_state);
    if (!file->Open(path)) return static_cast<HRESULT>(GetLastError());
    m_volumes.push_back(file->Identity());
    TakeLength(*file.Get());
    *stream = file.Detach();
    return S_OK;
  });
}

}  // namespace morvunp::sevenzip
