// Handles and C runtime descriptors: both are descriptors of this system.
#pragma once

#include <string>

#include "platform/types.h"

namespace platform {

inline int DescriptorOf(HANDLE file) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(file));
}
inline HANDLE HandleOf(int descriptor) {
  return reinterpret_cast<HANDLE>(std::intptr_t{descriptor});
}

/// What an open asks of others who have the file open.
enum class Share { kAnything, kReadersOnly, kNothing };

/// Opens a regular file or a block device and takes its advisory lock. Never
/// waits, never returns 0, 1 or 2 (0 means "none" to callers). `flags` are
/// those of open(2). Returns -1 with errno set.
int OpenDescriptor(const std::string& path, int flags, Share share);

}  // namespace platform
