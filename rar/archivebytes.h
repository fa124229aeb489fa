// An archive's own bytes, for what the engine does not tell of it.
#pragma once

#include <string>

#include "frame/filesystem.h"

namespace morvunp::rar {

class ArchiveBytes {
 public:
  explicit ArchiveBytes(const std::wstring& path);

  /// In bytes; 0 for a file that cannot be opened.
  ULONGLONG Size() const { return m_nSize; }
  /// Fewer bytes at the end of the file, none where it cannot be read.
  std::string Read(ULONGLONG offset, DWORD length) const;
  /// The file could not be opened, or not be read once.
  bool HasFailed() const { return m_bFailed; }

 private:
  frame::OpenFile m_file;
  ULONGLONG m_nSize = 0;
  mutable bool m_bFailed = false;
};

}  // namespace morvunp::rar
