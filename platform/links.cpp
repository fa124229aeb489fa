// Further names of files, copies, and where symbolic links lead.
#include <fcntl.h>
#include <stdio.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "morvunp/platform/files.h"
#include "morvunp/platform/text.h"
#include "platform/descriptors.h"

namespace platform = morvunp::platform;

namespace {

constexpr std::size_t kCopyBlock = std::size_t{1} << 20;

BOOL ResultOf(int result) { return result == 0 ? TRUE : platform::FailWithErrno(errno); }

/// Copies from the start of `from` to the end of it.
bool CopyData(int from, int to) {
  for (;;) {
    const ssize_t copied = sendfile(to, from, nullptr, kCopyBlock);
    if (copied == 0) return true;
    if (copied < 0 && errno != EINTR) return false;
  }
}

bool CopyAll(int from, int to) {
  struct stat status {};
  if (fstat(from, &status) != 0 || !CopyData(from, to)) return false;
  const timespec times[] = {status.st_atim, status.st_mtim};
  return fchmod(to, status.st_mode & 0777) == 0 && futimens(to, times) == 0;
}

/// Closes a descriptor when it goes; negative for none.
struct Descriptor {
  explicit Descriptor(int descriptor) : number(descriptor) {}
  ~Descriptor() {
    const int error = errno;
    if (number >= 0) close(number);
    errno = error;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number;
};

}  // namespace

BOOL MoveFileExW(LPCWSTR existing, LPCWSTR path, DWORD flags) {
  const std::string from = platform::ToNativePath(existing);
  const std::string to = platform::ToNativePath(path);
  if ((flags & MOVEFILE_REPLACE_EXISTING) != 0) return ResultOf(rename(from.c_str(), to.c_str()));
  const int renamed = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  if (renamed == 0 || errno != EINVAL) return ResultOf(renamed);
  // A file system that cannot do both at once.
  struct stat status {};
  if (lstat(to.c_str(), &status) == 0) return platform::FailWithErrno(EEXIST);
  return ResultOf(rename(from.c_str(), to.c_str()));
}

BOOL CopyFileW(LPCWSTR existing, LPCWSTR path, BOOL failIfExists) {
  const Descriptor from(platform::OpenDescriptor(
      platform::ToNativePath(existing), O_RDONLY | O_NOFOLLOW, platform::Share::kAnything));
  if (from.number < 0) return platform::FailWithErrno(errno);
  const std::string name = platform::ToNativePath(path);
  const int disposition = failIfExists != FALSE ? O_EXCL : O_TRUNC | O_NOFOLLOW;
  const Descriptor to(
      platform::OpenDescriptor(name, O_WRONLY | O_CREAT | disposition, platform::Share::kAnything));
  if (to.number < 0) return platform::FailWithErrno(errno);
  if (CopyAll(from.number, to.number)) return TRUE;
  const int error = errno;
  unlink(name.c_str());
  return platform::FailWithErrno(error);
}

BOOL CreateHardLinkW(LPCWSTR path, LPCWSTR existing, SECURITY_ATTRIBUTES*) {
  return ResultOf(linkat(AT_FDCWD, platform::ToNativePath(existing).c_str(), AT_FDCWD,
                         platform::ToNativePath(path).c_str(), 0));
}

std::wstring platform::ResolvedPath(const std::wstring& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(
      realpath(ToNativePath(path).c_str(), nullptr), &std::free);
  if (resolved != nullptr) return ToLibraryPath(resolved.get());
  FailWithErrno(errno);
  return {};
}

std::wstring platform::LinkTarget(const std::wstring& path) {
  std::array<char, PATH_MAX> text{};
  const ssize_t length = readlink(ToNativePath(path).c_str(), text.data(), text.size());
  if (length > 0) return ToLibraryPath({text.data(), static_cast<std::size_t>(length)});
  FailWithErrno(errno);
  return {};
}
