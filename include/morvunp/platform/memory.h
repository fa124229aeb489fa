// Memory by the page.
#pragma once

#include "morvunp/platform/types.h"

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD PAGE_READWRITE = 0x04;

/// Zeroed pages of at least `size` bytes; null when there are none. Only new,
/// committed, writable memory is supported.
MORVUNP_API LPVOID VirtualAlloc(LPVOID address, std::size_t size, DWORD type, DWORD protection);
/// Frees a whole allocation; null is none.
MORVUNP_API BOOL VirtualFree(LPVOID address, std::size_t size, DWORD type);
