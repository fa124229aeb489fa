#include "morvunp/platform/crt.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "morvunp/platform/files.h"
#include "morvunp/platform/text.h"
#include "platform/descriptors.h"

namespace platform = morvunp::platform;

int _wsopen_s(int* descriptor, LPCWSTR path, int, int share, int) {
  const auto sharing =
      share == _SH_DENYWR ? platform::Share::kReadersOnly : platform::Share::kAnything;
  *descriptor = platform::OpenDescriptor(platform::ToNativePath(path), O_RDONLY, sharing);
  return *descriptor >= 0 ? 0 : errno;
}

int _close(int descriptor) { return CloseHandle(platform::HandleOf(descriptor)) != FALSE ? 0 : -1; }

int _read(int descriptor, void* buffer, UINT count) {
  DWORD read = 0;
  const BOOL done = ReadFile(platform::HandleOf(descriptor), buffer, count, &read, nullptr);
  return done != FALSE ? static_cast<int>(read) : -1;
}

LONG _lseek(int descriptor, LONG offset, int origin) {
  const std::int64_t position = lseek(descriptor, offset, origin);
  return position <= INT32_MAX ? static_cast<LONG>(position) : -1;
}

std::int64_t _lseeki64(int descriptor, std::int64_t offset, int origin) {
  return lseek(descriptor, offset, origin);
}

std::intptr_t _get_osfhandle(int descriptor) { return descriptor; }
