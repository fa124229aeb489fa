#include "frame/filesystem.h"

#include "frame/itempath.h"
#include "morvunp/dostime.h"

namespace morvunp::frame {

DWORD MoveFilePointer(HANDLE file, LONGLONG distance, DWORD method, ULONGLONG* position) {
  auto high = static_cast<LONG>(distance >> 32);
  const DWORD low = SetFilePointer(file, static_cast<LONG>(distance), &high, method);
  if (position != nullptr) *position = ULONGLONG{static_cast<DWORD>(high)} << 32 | low;
  return low == INVALID_SET_FILE_POINTER ? GetLastError() : ERROR_SUCCESS;
}

bool CreateFolder(CUnpackState& state, const std::wstring& path, const FolderReport& report) {
  if (path.empty()) return false;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  // Not even its ancestors are made for a folder that cannot be.
  if (GetLastError() == ERROR_FILENAME_EXCED_RANGE) return false;
  if (!HasParent(path)) return true;
  // The root of the file system has an empty text before its backslash.
  const std::wstring parent(ParentOf(path));
  if (!parent.empty() && !CreateFolder(state, parent, report)) return false;
  if (CreateDirectoryW(path.c_str(), nullptr) == FALSE) return false;
  state.m_strLastTarget = path;
  report(path);
  return true;
}

bool FileExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool SetTimeModified(HANDLE file, __time64_t time) {
  std::tm local{};
  if (_localtime64_s(&local, &time) != 0) return false;
  const FILETIME written = platform::FileTimeOfTimespec(time, 0);
  return SetFileTime(file, &written, nullptr, &written) != FALSE;
}

bool SetDosTimeModified(HANDLE file, DWORD dosDateTime) {
  const std::optional<__time64_t> time = TimeOfDosDateTime(dosDateTime);
  return time && SetTimeModified(file, *time);
}

namespace {

OpenFile OpenForTimes(const std::wstring& path) {
  return OpenFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

}  // namespace

bool SetFileTimeModified(const std::wstring& path, __time64_t time) {
  const OpenFile file = OpenForTimes(path);
  return file.IsOpen() && SetTimeModified(file.Get(), time);
}

bool SetFileDosTimeModified(const std::wstring& path, DWORD dosDateTime) {
  const OpenFile file = OpenForTimes(path);
  return file.IsOpen() && SetDosTimeModified(file.Get(), dosDateTime);
}

}  // namespace morvunp::frame
