#include "rar/archivebytes.h"

namespace morvunp::rar {

ArchiveBytes::ArchiveBytes(const std::wstring& path)
    : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_EXISTING, 0, nullptr)) {
  m_bFailed = !m_file.IsOpen() ||
              frame::MoveFilePointer(m_file.Get(), 0, FILE_END, &m_nSize) != ERROR_SUCCESS;
}

std::string ArchiveBytes::Read(ULONGLONG offset, DWORD length) const {
  std::string bytes(length, '\0');
  OVERLAPPED position{static_cast<DWORD>(offset), static_cast<DWORD>(offset >> 32)};
  DWORD read = 0;
  m_bFailed = m_bFailed || ReadFile(m_file.Get(), bytes.data(), length, &read, &position) == FALSE;
  bytes.resize(m_bFailed ? 0 : read);
  return bytes;
}

}  // namespace morvunp::rar
