// Files, folders and attributes.
//
// Paths use backslashes and are turned into the system's own form at the call
// (see platform/text.h). Attributes: read-only is the absence of the owner's
// write bit; hidden and system live in the extended attribute user.DOSATTRIB
// as a hexadecimal text. Sharing is advisory (flock): readers share, a writer
// that asks is refused; a file that is just created takes its lock with its
// second write. A failing call leaves its reason in GetLastError.
#pragma once

#include "morvunp/platform/times.h"
#include "morvunp/platform/types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;

inline constexpr DWORD OPEN_EXISTING = 3;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x2;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
/// A symbolic link. FILE_ATTRIBUTE_DIRECTORY is set beside it when the link
/// leads to a folder.
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
/// The high half of the attributes is a Unix mode: who sets them applies its
/// permission bits as the umask allows, never set-uid, set-gid or sticky,
/// and looks at nothing else.
inline constexpr DWORD FILE_ATTRIBUTE_UNIX_EXTENSION = 0x8000;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

/// Refuse to open a symbolic link (its target is never followed).
inline constexpr DWORD FILE_FLAG_OPEN_REPARSE_POINT = 0x00200000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

struct SECURITY_ATTRIBUTES;

/// The byte offset of a positioned read (the only use of this record here).
struct OVERLAPPED {
  DWORD Offset = 0;
  DWORD OffsetHigh = 0;
};

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes = 0;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh = 0;
  DWORD nFileSizeLow = 0;
  /// The name without its folder, as it was asked for. Cut where a name is
  /// longer than any that this system has.
  wchar_t cFileName[260] = {};
};

/// Opens an existing regular file or block device; anything else is refused, and
/// no open ever waits. Files are made below an open folder only; see
/// platform/below.h.
MORVUNP_API HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                               DWORD disposition, DWORD flags, HANDLE templateFile);

/// Reads at the offset of `position`, or at the file pointer when it is null.
/// TRUE with `*read` 0 at the end of the file.
MORVUNP_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD length, DWORD* read,
                          OVERLAPPED* position);
MORVUNP_API BOOL WriteFile(HANDLE file, const void* buffer, DWORD length, DWORD* written,
                           OVERLAPPED*);
/// Moves the file pointer by a 64-bit distance, its high half in `*high`, from
/// the start, from where it is or from the end. The new pointer comes back in
/// two halves. INVALID_SET_FILE_POINTER may be the low half of a far position:
/// the error code, cleared by success, tells.
MORVUNP_API DWORD SetFilePointer(HANDLE file, LONG low, LONG* high, DWORD method);
/// Ends the file at the file pointer; what is added reads as zeros.
MORVUNP_API BOOL SetEndOfFile(HANDLE file);
/// Bytes, in two halves; failure shows as for SetFilePointer.
MORVUNP_API DWORD GetFileSize(HANDLE file, DWORD* high);
MORVUNP_API BOOL CloseHandle(HANDLE file);

/// INVALID_FILE_ATTRIBUTES when the path does not exist. Looks at a symbolic
/// link itself.
MORVUNP_API DWORD GetFileAttributesW(LPCWSTR path);
MORVUNP_API BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*);

/// Looks one exact path up; patterns are not supported. Close with FindClose.
/// The attributes are those of GetFileAttributesW; for a link to a file, size
/// and times are the file's, which is what an open gives.
MORVUNP_API HANDLE FindFirstFileW(LPCWSTR path, WIN32_FIND_DATAW* data);
MORVUNP_API BOOL FindClose(HANDLE search);

/// A null time is left as it is. The creation time cannot be set on this
/// system and is ignored.
MORVUNP_API BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* lastAccess,
                             const FILETIME* lastWrite);

namespace morvunp::platform {

/// What tells one file of the system from all others, whatever its name.
struct FileIdentity {
  ULONGLONG device = 0;
  ULONGLONG number = 0;

  bool operator==(const FileIdentity&) const = default;
};

/// Of an open file; all zero where it cannot be told.
MORVUNP_API FileIdentity IdentityOf(HANDLE file);
/// Of what a path leads to; all zero where it leads nowhere.
MORVUNP_API FileIdentity IdentityOfPath(const std::wstring& path);

/// The path of an existing file or folder with every symbolic link in it
/// resolved. Empty, with the reason in GetLastError, when there is none.
MORVUNP_API std::wstring ResolvedPath(const std::wstring& path);

/// The entry of the path's folder whose name is that of the path ignoring case,
/// the first by name when there are several; empty when there is none. The file
/// systems of the host's own system look all names up like that.
MORVUNP_API std::wstring NameIgnoringCase(const std::wstring& path);
}  // namespace morvunp::platform
