#include "sevenzip/filestreams.h"

#include <algorithm>

namespace sevenzip {
namespace {

/// What one call moves at most; the engine asks again for the rest.
constexpr DWORD kLargestTransfer = DWORD{4} << 20;

HRESULT LastResult() { return platform::ResultOfError(GetLastError()); }

}  // namespace

bool StreamFile::Open(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags) {
  if (!Close()) return false;
  Take(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                   FILE_ATTRIBUTE_NORMAL | flags, nullptr));
  return IsOpen();
}

bool StreamFile::OpenForReading(const std::wstring& path) {
  return Open(path, GENERIC_READ, OPEN_EXISTING, 0);
}

bool StreamFile::Create(const std::wstring& path) {
  // Most files are new, which costs less where it is known.
  if (Open(path, GENERIC_WRITE, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT)) return true;
  return GetLastError() == ERROR_FILE_EXISTS &&
         Open(path, GENERIC_WRITE, CREATE_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT);
}

HRESULT StreamFile::Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) const {
  static_assert(kSeekStart == FILE_BEGIN && kSeekCurrent == FILE_CURRENT && kSeekEnd == FILE_END);
  if (origin > kSeekEnd) return STG_E_INVALIDFUNCTION;
  const DWORD error = frame::MoveFilePointer(Get(), offset, origin, position);
  return error == ERROR_SUCCESS ? S_OK : platform::ResultOfError(error);
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
  DWORD written = 0;
  const BOOL done =
      WriteFile(m_file.Get(), data, std::min(size, kLargestTransfer), &written, nullptr);
  m_nProcessedSize += written;
  if (processed != nullptr) *processed = written;
  return done != FALSE ? S_OK : LastResult();
}

HRESULT COutFileStream::SetSize(ULONGLONG size) {
  ULONGLONG before = 0;
  ULONGLONG end = 0;
  const bool done = Seek(0, kSeekCurrent, &before) == S_OK &&
                    Seek(static_cast<LONGLONG>(size), kSeekStart, &end) == S_OK && end == size &&
                    SetEndOfFile(m_file.Get()) != FALSE &&
                    Seek(static_cast<LONGLONG>(before), kSeekStart, nullptr) == S_OK;
  return done ? S_OK : E_FAIL;
}

}  // namespace sevenzip
