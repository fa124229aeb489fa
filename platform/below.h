// The file services in the form that takes a folder's handle: what is named
// lies in that folder, whoever moves or replaces the folders above it
// meanwhile. No service here follows a symbolic link.
//
// Names are single components, paths are joined by backslashes; both in the
// library's form (see platform/text.h). A failing service leaves its reason in
// GetLastError and LastSystemError.
#pragma once

#include "morvunp/platform/files.h"

namespace morvunp::platform {

/// Opens a folder for the services below; symbolic links on the way are
/// followed. INVALID_HANDLE_VALUE on failure. Close with CloseHandle.
HANDLE OpenFolder(LPCWSTR path);

/// The same for a folder below an open one, which no link and no ".." may lead
/// to or out of.
HANDLE OpenFolderBelow(HANDLE folder, LPCWSTR path);

/// FALSE with ERROR_ALREADY_EXISTS for a name that is taken. `mode` holds
/// permission bits, as the umask allows.
BOOL CreateFolderBelow(HANDLE folder, LPCWSTR name, DWORD mode = 0777);
BOOL RemoveFolderBelow(HANDLE folder, LPCWSTR name);

/// Creates a file for writing, unshared, under a name that must be free.
HANDLE CreateFileBelow(HANDLE folder, LPCWSTR name, DWORD mode = 0666);

/// Opens an existing file for writing, unshared, and empties it. Refused for a
/// read-only one, whoever asks, and, with the system's number EMLINK, for one
/// with further names or set-uid or set-gid bits: new content would show under
/// names outside the folder, or be run with the rights of the file's owner.
HANDLE RewriteFileBelow(HANDLE folder, LPCWSTR name);

/// Opens a regular file for reading.
HANDLE OpenFileBelow(HANDLE folder, LPCWSTR name);

struct FoundFile {
  /// As GetFileAttributesW; neither a folder nor a regular file:
  /// FILE_ATTRIBUTE_REPARSE_POINT.
  DWORD attributes = 0;
  /// Bytes.
  ULONGLONG size = 0;
  FILETIME lastWrite;
  /// Unix permission bits with set-uid, set-gid and sticky.
  DWORD mode = 0;
  ULONGLONG links = 0;
  FileIdentity identity;
};

/// Looks a name up, a link itself.
BOOL FindBelow(HANDLE folder, LPCWSTR name, FoundFile& found);
/// Takes read-only, hidden and system from a file.
BOOL ClearProtectionBelow(HANDLE folder, LPCWSTR name);

/// Gives an open file attributes; see FILE_ATTRIBUTE_UNIX_EXTENSION.
BOOL SetAttributesOf(HANDLE file, DWORD attributes);
/// Gives a folder that was opened above, and that may be read, the permission
/// bits of FILE_ATTRIBUTE_UNIX_EXTENSION, as the umask allows, and a time; each
/// may be null. Its set-uid, set-gid and sticky bits stay.
BOOL SetFolderFacts(HANDLE folder, const DWORD* attributes, const FILETIME* lastWrite);
/// Gives an open file permission bits, whatever the umask.
BOOL SetModeOf(HANDLE file, DWORD mode);

BOOL DeleteBelow(HANDLE folder, LPCWSTR name);
/// Within one folder: `from` takes the place of the file `to`, which goes. At no
/// time is there nothing under that name.
BOOL ReplaceBelow(HANDLE folder, LPCWSTR from, LPCWSTR to);
/// A further name for a regular file.
BOOL LinkBelow(HANDLE folder, LPCWSTR existing, HANDLE newFolder, LPCWSTR name);
BOOL CreateSymbolicLinkBelow(HANDLE folder, LPCWSTR name, LPCWSTR target);
/// What a symbolic link says, in the library's form; empty when it is none.
std::wstring LinkTargetBelow(HANDLE folder, LPCWSTR name);
/// Dates a symbolic link itself.
BOOL SetTimeBelow(HANDLE folder, LPCWSTR name, const FILETIME& lastWrite);

}  // namespace morvunp::platform
