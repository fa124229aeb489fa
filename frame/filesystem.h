// Open files, making folders, and the times of written files.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "morvunp/unpackstate.h"

namespace morvunp::frame {

/// Owns the handle of an open file; INVALID_HANDLE_VALUE for none.
class OpenFile {
 public:
  explicit OpenFile(HANDLE file = INVALID_HANDLE_VALUE) : m_hFile(file) {}
  ~OpenFile() { Close(); }
  OpenFile(OpenFile&& other) noexcept : m_hFile(other.Release()) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  HANDLE Get() const { return m_hFile; }
  bool IsOpen() const { return m_hFile != INVALID_HANDLE_VALUE; }
  /// Gives the handle away.
  HANDLE Release() { return std::exchange(m_hFile, INVALID_HANDLE_VALUE); }
  /// False when the system could not finish the file; it is closed all the same.
  bool Close() { return !IsOpen() || CloseHandle(Release()) != FALSE; }
  /// Takes a handle over while there is none.
  void Take(HANDLE file) { m_hFile = file; }

 private:
  HANDLE m_hFile;
};

/// Moves the pointer of an open file; `position`, if given, becomes where it is
/// then. ERROR_SUCCESS, or why it cannot be moved.
DWORD MoveFilePointer(HANDLE file, LONGLONG distance, DWORD method, ULONGLONG* position = nullptr);

/// Told of every folder that CreateFolder makes, parents first.
using FolderReport = std::function<void(const std::wstring& path)>;

/// Makes a folder with its missing ancestors. True when it exists afterwards
/// as a folder. `state.m_strLastTarget` becomes the last folder made.
bool CreateFolder(CUnpackState& state, const std::wstring& path, const FolderReport& report);

/// True when the path exists, as a file or a folder.
bool FileExists(const std::wstring& path);

/// Gives an open file its creation and last-write time; the last-access time
/// stays. False when the time has no local calendar time or cannot be set.
bool SetTimeModified(HANDLE file, __time64_t time);

/// The same for a file by its path, opened without sharing.
bool SetFileTimeModified(const std::wstring& path, __time64_t time);

/// The same two with an MS-DOS date in the high half and time in the low half.
bool SetDosTimeModified(HANDLE file, DWORD dosDateTime);
bool SetFileDosTimeModified(const std::wstring& path, DWORD dosDateTime);

}  // namespace morvunp::frame
