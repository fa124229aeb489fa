// Basic types, constants and the per-thread error code of the host system.
//
// Names, widths and values are the system's own, so that code written against
// them keeps its meaning on either side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "morvunp/platform/export.h"

using BOOL = int;
using BYTE = std::uint8_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using INT_PTR = std::intptr_t;
using HRESULT = std::int32_t;
using LPCSTR = const char*;
using LPCWSTR = const wchar_t*;
using LPVOID = void*;

/// An open file or folder search. INVALID_HANDLE_VALUE when there is none.
using HANDLE = void*;

/// A window object of this layer's table; null when there is none. The number
/// is never reused, so a stale handle names nothing.
struct HWND__;
using HWND = HWND__*;

/// An icon that the registered user interface handed out; its meaning is the
/// interface's own.
struct HICON__;
using HICON = HICON__*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;

/// The calling thread's last error, as the services of this layer leave it.
MORVUNP_API DWORD GetLastError();
MORVUNP_API void SetLastError(DWORD error);

namespace morvunp::platform {
/// The `errno` value behind the thread's last error; 0 where it does not come
/// from the system. The code of GetLastError is coarser: it tells neither a
/// full disk from a used-up quota nor a read error from a file that is too
/// large.
MORVUNP_API int LastSystemError();

/// Sets the thread's last error from a C `errno` value and returns FALSE, so
/// that a failing service can end with one statement.
BOOL FailWithErrno(int error);
}  // namespace morvunp::platform
