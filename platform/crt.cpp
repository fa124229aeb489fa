#include "platform/crt.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/descriptors.h"
#include "platform/text.h"

int _wsopen_s(int* descriptor, LPCWSTR path, int, int share, int) {
  const auto sharing =
      share == _SH_DENYWR ? platform::Share::kReadersOnly : platform::Share::kAnything;
  *descriptor = platform::OpenDescriptor(platform::ToNativePath(path), O_RDONLY, sharing);
  return *descriptor >= 0 ? 0 : errno;
}

int _close(int descriptor) { return close(descriptor); }

std::int64_t _lseeki64(int descriptor, std::int64_t offset, int origin) {
  return lseek(descriptor, offset, origin);
}

std::intptr_t _get_osfhandle(int descriptor) { return descriptor; }
