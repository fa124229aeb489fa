// File attributes. Read-only is the owner's missing write bit; hidden and
// system are kept where other systems that share files with Windows keep them:
// in user.DOSATTRIB, as "0x" and a hexadecimal number.
#include "platform/attributes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "morvunp/platform/text.h"

namespace platform = morvunp::platform;

namespace {

BOOL StoreAttributes(int descriptor, DWORD attributes) {
  if (attributes == 0) {
    // Nothing stored reads the same as zero, so a refusal changes nothing.
    fremovexattr(descriptor, platform::kDosAttributes);
    return TRUE;
  }
  std::array<char, 16> text{};
  const int length = std::snprintf(text.data(), text.size(), "0x%x", attributes);
  if (fsetxattr(descriptor, platform::kDosAttributes, text.data(), static_cast<std::size_t>(length),
                0) != 0) {
    return platform::FailWithErrno(errno);
  }
  return TRUE;
}

/// A link counts as a folder when it leads to one, as on the host's system.
DWORD AttributesOfLink(const std::string& path) {
  struct stat target {};
  const bool toFolder = stat(path.c_str(), &target) == 0 && S_ISDIR(target.st_mode);
  return FILE_ATTRIBUTE_REPARSE_POINT | (toFolder ? FILE_ATTRIBUTE_DIRECTORY : 0);
}

/// The start of what the kernel tells about this thread; empty where it does not.
std::string ThreadStatus() {
  const int descriptor = open("/proc/thread-self/status", O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return {};
  std::array<char, 256> text{};
  const ssize_t length = read(descriptor, text.data(), text.size());
  close(descriptor);
  return {text.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

/// The call that gives the umask also sets it, for all threads: two that look at
/// once could leave the wrong one behind. It is the last resort.
mode_t CurrentUmask() {
  constexpr std::string_view kField = "\nUmask:\t";
  const std::string status = ThreadStatus();
  const std::size_t field = status.find(kField);
  if (field != status.npos && status.find('\n', field + 1) != status.npos) {
    return static_cast<mode_t>(std::strtoul(status.c_str() + field + kField.size(), nullptr, 8));
  }
  const mode_t mask = umask(077);
  umask(mask);
  return mask;
}

BOOL ApplyMode(int descriptor, mode_t mode, mode_t present) {
  // What a folder has from the one above it is not the caller's to take.
  const mode_t kept = S_ISDIR(present) ? present & 07000 : 0;
  const mode_t wanted = (mode & 0777 & ~CurrentUmask()) | kept;
  if (wanted == (present & 07777)) return TRUE;
  return fchmod(descriptor, wanted) == 0 ? TRUE : platform::FailWithErrno(errno);
}

}  // namespace

DWORD GetFileAttributesW(LPCWSTR path) {
  const std::string native = platform::ToNativePath(path);
  struct stat status {};
  if (lstat(native.c_str(), &status) != 0) {
    platform::FailWithErrno(errno);
    return INVALID_FILE_ATTRIBUTES;
  }
  if (S_ISLNK(status.st_mode)) return AttributesOfLink(native);
  DWORD attributes = platform::StoredAttributes([&](char* text, std::size_t size) {
    return lgetxattr(native.c_str(), platform::kDosAttributes, text, size);
  });
  if (S_ISDIR(status.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if ((status.st_mode & S_IWUSR) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
  return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

BOOL platform::SetDescriptorAttributes(int descriptor, DWORD attributes) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return FailWithErrno(errno);
  if ((attributes & FILE_ATTRIBUTE_UNIX_EXTENSION) != 0) {
    return ApplyMode(descriptor, attributes >> 16, status.st_mode);
  }
  // Extended attributes cannot be written to a file without its write bit.
  const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  const mode_t writable = (status.st_mode & 07777) | S_IWUSR;
  if (!readOnly && writable != (status.st_mode & 07777) && fchmod(descriptor, writable) != 0) {
    return FailWithErrno(errno);
  }
  const BOOL stored = StoreAttributes(descriptor, attributes & kStoredAttributes);
  if (readOnly && fchmod(descriptor, writable & ~mode_t{0222}) != 0) {
    return FailWithErrno(errno);
  }
  return stored;
}
