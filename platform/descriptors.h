// Handles and C runtime descriptors: both are descriptors of this system.
#pragma once

#include <sys/types.h>

#include <string>

#include "morvunp/platform/types.h"

namespace morvunp::platform {

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

/// The same for a path from an open folder; `mode` is that of a file it makes.
/// O_TRUNC fails with EMLINK where RewriteFileBelow refuses.
int OpenDescriptorAt(int folder, const std::string& path, int flags, mode_t mode, Share share);

/// Moves a descriptor out of the range of the standard streams; passes failure
/// on.
int MoveUp(int descriptor);

}  // namespace morvunp::platform
