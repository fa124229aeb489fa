#include "morvunp/platform/memory.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

LPVOID VirtualAlloc(LPVOID, std::size_t size, DWORD, DWORD) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t whole = (size + page - 1) / page * page;
  void* const memory = std::aligned_alloc(page, whole);
  if (memory == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  return std::memset(memory, 0, whole);
}

BOOL VirtualFree(LPVOID address, std::size_t, DWORD) {
  std::free(address);
  return TRUE;
}
