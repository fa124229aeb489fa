// An archive's own bytes, for what the engine does not tell of it.
#pragma once

#include <string>

#include "frame/filesystem.h"

namespace morvunp::rar {

class ArchiveBytes {
 public:
  explicit ArchiveBytes(const std::wstring& path)
      : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr)) {}

  /// Fewer at the end, or where they cannot be read.
  std::string Read(ULONGLONG offset, DWORD length) const {
    std::string bytes(length, '\0');
    OVERLAPPED position{static_cast<DWORD>(offset), static_cast<DWORD>(offset >> 32)};
    DWORD read = 0;
    const bool isRead =
        m_file.IsOpen() && ReadFile(m_file.Get(), bytes.data(), length, &read, &position) != FALSE;
    bytes.resize(isRead ? read : 0);
    return bytes;
  }

 private:
  frame::OpenFile m_file;
};

}  // namespace morvunp::rar
