// Low-level file calls of the host system's C runtime.
#pragma once

#include <cstdint>

#include "morvunp/platform/types.h"

inline constexpr int _O_RDONLY = 0x0000;
inline constexpr int _O_BINARY = 0x8000;
inline constexpr int _SH_DENYWR = 0x20;
inline constexpr int _S_IREAD = 0x0100;

/// Opens an existing file for reading, sharing it with readers and denying
/// writers. `*descriptor` is never 0; it is -1 on failure. Returns 0 or an
/// errno value.
MORVUNP_API int _wsopen_s(int* descriptor, LPCWSTR path, int flags, int share, int mode);
MORVUNP_API int _close(int descriptor);
/// Bytes read, 0 at the end, or -1.
MORVUNP_API int _read(int descriptor, void* buffer, UINT count);
/// `origin` as in <cstdio>; the new offset, or -1, also where it does not fit.
MORVUNP_API LONG _lseek(int descriptor, LONG offset, int origin);
MORVUNP_API std::int64_t _lseeki64(int descriptor, std::int64_t offset, int origin);
/// The handle behind a descriptor, for positioned reads with ReadFile. The
/// descriptor keeps its ownership.
MORVUNP_API std::intptr_t _get_osfhandle(int descriptor);
