#include "platform/below.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "morvunp/platform/text.h"
#include "platform/attributes.h"
#include "platform/descriptors.h"

namespace morvunp::platform {
namespace {

BOOL ResultOf(int result) { return result == 0 ? TRUE : FailWithErrno(errno); }

HANDLE HandleOrFailure(int descriptor) {
  if (descriptor >= 0) return HandleOf(descriptor);
  FailWithErrno(errno);
  return INVALID_HANDLE_VALUE;
}

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

/// One system call for the whole path. -1 with ENOSYS where the kernel lacks
/// it.
int OpenAtOnce(int folder, const std::string& path) {
  open_how how{};
  how.flags = kFolderFlags;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
  return static_cast<int>(syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how));
}

/// Old kernels lack the call, and filters of containers refuse it (EPERM). Of
/// the process on purpose: the kernel is the same for all threads.
bool KernelOpensAtOnce() {
  static const bool does = [] {
    const int probe = open("/", kFolderFlags);
    if (probe < 0) return false;
    const int opened = OpenAtOnce(probe, ".");
    close(probe);
    if (opened >= 0) close(opened);
    return opened >= 0;
  }();
  return does;
}

/// The same by hand: every component is opened on its own.
int OpenStepByStep(int folder, std::string_view path) {
  int opened = openat(folder, ".", kFolderFlags);
  while (opened >= 0 && !path.empty()) {
    const std::string component(path.substr(0, path.find('/')));
    path.remove_prefix(std::min(path.size(), component.size() + 1));
    if (component == "..") errno = EXDEV;
    const int next =
        component == ".." ? -1 : openat(opened, component.c_str(), kFolderFlags | O_NOFOLLOW);
    const int error = errno;
    close(opened);
    errno = error;
    opened = next;
  }
  return opened;
}

FoundFile FoundOf(const struct stat& status, DWORD stored) {
  FoundFile found;
  if (S_ISDIR(status.st_mode)) {
    found.attributes = FILE_ATTRIBUTE_DIRECTORY;
  } else if (!S_ISREG(status.st_mode)) {
    found.attributes = FILE_ATTRIBUTE_REPARSE_POINT;
  } else {
    found.attributes = stored;
  }
  if ((status.st_mode & S_IWUSR) == 0) found.attributes |= FILE_ATTRIBUTE_READONLY;
  if (found.attributes == 0) found.attributes = FILE_ATTRIBUTE_NORMAL;
  found.size = static_cast<ULONGLONG>(status.st_size);
  found.lastWrite =
      FileTimeOfTimespec(status.st_mtim.tv_sec, static_cast<std::uint32_t>(status.st_mtim.tv_nsec));
  found.mode = status.st_mode & 07777;
  found.links = status.st_nlink;
  found.identity = {status.st_dev, status.st_ino};
  return found;
}

/// The calls for extended attributes know no folder's descriptor; its name in
/// the process's own table stands for it.
DWORD StoredAttributesBelow(int folder, const std::string& name) {
  const std::string path = "/proc/self/fd/" + std::to_string(folder) + '/' + name;
  return StoredAttributes([&](char* text, std::size_t size) {
    return lgetxattr(path.c_str(), kDosAttributes, text, size);
  });
}

}  // namespace

HANDLE OpenFolder(LPCWSTR path) {
  return HandleOrFailure(MoveUp(open(ToNativePath(path).c_str(), kFolderFlags)));
}

HANDLE OpenFolderBelow(HANDLE folder, LPCWSTR path) {
  const std::string native = ToNativePath(path);
  const int parent = DescriptorOf(folder);
  return HandleOrFailure(
      MoveUp(KernelOpensAtOnce() ? OpenAtOnce(parent, native) : OpenStepByStep(parent, native)));
}

BOOL CreateFolderBelow(HANDLE folder, LPCWSTR name, DWORD mode) {
  if (mkdirat(DescriptorOf(folder), ToNativePath(name).c_str(), mode) == 0) return TRUE;
  const bool exists = errno == EEXIST;
  FailWithErrno(errno);
  if (exists) SetLastError(ERROR_ALREADY_EXISTS);
  return FALSE;
}

BOOL RemoveFolderBelow(HANDLE folder, LPCWSTR name) {
  return ResultOf(unlinkat(DescriptorOf(folder), ToNativePath(name).c_str(), AT_REMOVEDIR));
}

HANDLE CreateFileBelow(HANDLE folder, LPCWSTR name, DWORD mode) {
  return HandleOrFailure(OpenDescriptorAt(DescriptorOf(folder), ToNativePath(name),
                                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode & 0777,
                                          Share::kNothing));
}

HANDLE RewriteFileBelow(HANDLE folder, LPCWSTR name) {
  return HandleOrFailure(OpenDescriptorAt(DescriptorOf(folder), ToNativePath(name),
                                          O_WRONLY | O_TRUNC | O_NOFOLLOW, 0, Share::kNothing));
}

HANDLE OpenFileBelow(HANDLE folder, LPCWSTR name) {
  return HandleOrFailure(OpenDescriptorAt(DescriptorOf(folder), ToNativePath(name),
                                          O_RDONLY | O_NOFOLLOW, 0, Share::kAnything));
}

BOOL FindBelow(HANDLE folder, LPCWSTR name, FoundFile& found) {
  const std::string native = ToNativePath(name);
  struct stat status {};
  if (fstatat(DescriptorOf(folder), native.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return FailWithErrno(errno);
  }
  const bool isFile = S_ISREG(status.st_mode);
  found = FoundOf(status, isFile ? StoredAttributesBelow(DescriptorOf(folder), native) : 0);
  return TRUE;
}

BOOL ClearProtectionBelow(HANDLE folder, LPCWSTR name) {
  const std::string native = ToNativePath(name);
  struct stat status {};
  const int parent = DescriptorOf(folder);
  if (fstatat(parent, native.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return FailWithErrno(errno);
  }
  const mode_t writable = (status.st_mode & 07777) | S_IWUSR;
  if (writable != (status.st_mode & 07777) &&
      fchmodat(parent, native.c_str(), writable, AT_SYMLINK_NOFOLLOW) != 0) {
    return FailWithErrno(errno);
  }
  const int file = openat(parent, native.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return FailWithErrno(errno);
  fremovexattr(file, kDosAttributes);
  close(file);
  return TRUE;
}

BOOL SetAttributesOf(HANDLE file, DWORD attributes) {
  return SetDescriptorAttributes(DescriptorOf(file), attributes);
}

BOOL SetFolderFacts(HANDLE folder, const DWORD* attributes, const FILETIME* lastWrite) {
  // A folder that is opened only to go there cannot be changed.
  const int opened =
      openat(DescriptorOf(folder), ".", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (opened < 0) return FailWithErrno(errno);
  const timespec times[] = {{0, UTIME_OMIT}, TimespecOf(lastWrite)};
  const BOOL isDated = ResultOf(futimens(opened, times));
  const bool hasMode = attributes != nullptr && (*attributes & FILE_ATTRIBUTE_UNIX_EXTENSION) != 0;
  const BOOL isDone = hasMode ? SetDescriptorAttributes(opened, *attributes) : isDated;
  close(opened);
  return isDated != FALSE ? isDone : FALSE;
}

BOOL SetModeOf(HANDLE file, DWORD mode) {
  return ResultOf(fchmod(DescriptorOf(file), mode & 0777));
}

BOOL DeleteBelow(HANDLE folder, LPCWSTR name) {
  return ResultOf(unlinkat(DescriptorOf(folder), ToNativePath(name).c_str(), 0));
}

BOOL ReplaceBelow(HANDLE folder, LPCWSTR from, LPCWSTR to) {
  const int parent = DescriptorOf(folder);
  const std::string source = ToNativePath(from);
  const std::string target = ToNativePath(to);
  // Some file systems write a file to the disk before it may take another's
  // place, which takes long for many; not when the two change places.
  if (renameat2(parent, source.c_str(), parent, target.c_str(), RENAME_EXCHANGE) != 0) {
    return ResultOf(renameat(parent, source.c_str(), parent, target.c_str()));
  }
  if (unlinkat(parent, source.c_str(), 0) == 0) return TRUE;
  const int error = errno;
  renameat2(parent, source.c_str(), parent, target.c_str(), RENAME_EXCHANGE);
  return FailWithErrno(error);
}

BOOL LinkBelow(HANDLE folder, LPCWSTR existing, HANDLE newFolder, LPCWSTR name) {
  return ResultOf(linkat(DescriptorOf(folder), ToNativePath(existing).c_str(),
                         DescriptorOf(newFolder), ToNativePath(name).c_str(), 0));
}

BOOL CreateSymbolicLinkBelow(HANDLE folder, LPCWSTR name, LPCWSTR target) {
  return ResultOf(
      symlinkat(ToNativePath(target).c_str(), DescriptorOf(folder), ToNativePath(name).c_str()));
}

std::wstring LinkTargetBelow(HANDLE folder, LPCWSTR name) {
  std::array<char, PATH_MAX> text{};
  const ssize_t length =
      readlinkat(DescriptorOf(folder), ToNativePath(name).c_str(), text.data(), text.size());
  if (length > 0) return ToLibraryPath({text.data(), static_cast<std::size_t>(length)});
  FailWithErrno(errno);
  return {};
}

BOOL SetTimeBelow(HANDLE folder, LPCWSTR name, const FILETIME& lastWrite) {
  const timespec times[] = {{0, UTIME_OMIT}, TimespecOf(&lastWrite)};
  return ResultOf(
      utimensat(DescriptorOf(folder), ToNativePath(name).c_str(), times, AT_SYMLINK_NOFOLLOW));
}

}  // namespace morvunp::platform
