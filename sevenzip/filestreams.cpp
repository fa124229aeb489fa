#include "sevenzip/filestreams.h"

#include <algorithm>

namespace morvunp::sevenzip {
namespace {

/// What one call moves at most; the engine asks again for the rest.
constexpr DWORD kLargestTransfer = DWORD{4} << 20;

HRESULT LastResult() { return platform::ResultOfError(GetLastError()); }

}  // namespace

bool StreamFile::OpenForReading(const std::wstring& path) {
  if (!Close()) return false;
  Take(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                   FILE_ATTRIBUTE_NORMAL, nullptr));
  return IsOpen();
}

HRESULT SeekFile(HANDLE file, LONGLONG offset, DWORD origin, ULONGLONG* position) {
  static_assert(kSeekStart == FILE_BEGIN && kSeekCurrent == FILE_CURRENT && kSeekEnd == FILE_END);
  if (origin > kSeekEnd) return STG_E_INVALIDFUNCTION;
  const DWORD error = frame::MoveFilePointer(file, offset, origin, position);
  return error == ERROR_SUCCESS ? S_OK : platform::ResultOfError(error);
}

HRESULT StreamFile::Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) const {
  return SeekFile(Get(), offset, origin, position);
}

HRESULT CInFileStream::Read(void* data, DWORD size, DWORD* processed) {
  DWORD read = 0;
  const BOOL done = ReadFile(m_file.Get(), data, std::min(size, kLargestTransfer), &read, nullptr);
  if (processed != nullptr) *processed = read;
  return done != FALSE ? S_OK : LastResult();
}

HRESULT CInFileStream::GetSize(ULONGLONG* size) {
  DWORD high = 0;
  const DWORD low = GetFileSize(m_file.Get(), &high);
  if (low == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) return LastResult();
  *size = ULONGLONG{high} << 32 | low;
  return S_OK;
}

HRESULT COutFileStream::Write(const void* data, DWORD size, DWORD* processed) {
  const DWORD length = std::min(size, kLargestTransfer);
  const bool done = m_pFile->Write(data, length);
  const HRESULT result = done ? S_OK : LastResult();
  if (processed != nullptr) *processed = done ? length : 0;
  if (done) m_nProcessedSize += length;
  return result;
}

HRESULT COutFileStream::SetSize(ULONGLONG size) {
  ULONGLONG before = 0;
  ULONGLONG end = 0;
  const bool done = Seek(0, kSeekCurrent, &before) == S_OK &&
                    Seek(static_cast<LONGLONG>(size), kSeekStart, &end) == S_OK && end == size &&
                    SetEndOfFile(m_pFile->Get()) != FALSE &&
                    Seek(static_cast<LONGLONG>(before), kSeekStart, nullptr) == S_OK;
  return done ? S_OK : E_FAIL;
}

}  // namespace morvunp::sevenzip
