#include "morvunp/platform/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "morvunp/platform/text.h"
#include "platform/attributes.h"
#include "platform/descriptors.h"

namespace platform = morvunp::platform;

namespace morvunp::platform {
namespace {

constexpr int kFirstDescriptor = 3;

int CloseWithErrno(int descriptor, int error) {
  close(descriptor);
  errno = error;
  return -1;
}

bool LockedByOthers(int descriptor, Share share, bool writing) {
  if (share == Share::kAnything) return false;
  // Readers do not share with writers, so a writer first asks for everything.
  const int mode = share == Share::kNothing || writing ? LOCK_EX : LOCK_SH;
  // File systems without locks refuse with other codes; sharing is a courtesy,
  // so that is no reason to fail.
  if (flock(descriptor, mode | LOCK_NB) != 0) return errno == EWOULDBLOCK;
  if (share == Share::kReadersOnly && writing) flock(descriptor, LOCK_SH | LOCK_NB);
  return false;
}

/// The file that this thread created last. Nobody else can have it open yet,
/// and most files are written at once, so its lock is taken with the second
/// write. A file is created, written and closed inside one call, so on one
/// thread: the number does not outlive the file.
struct LateLock {
  int descriptor = -1;
  bool written = false;
};
thread_local LateLock lateLock;

/// Before a write. False when somebody else has taken the file meanwhile.
bool TakeLateLock(int descriptor) {
  if (descriptor != lateLock.descriptor) return true;
  if (!lateLock.written) {
    lateLock.written = true;
    return true;
  }
  lateLock = {};
  return !LockedByOthers(descriptor, Share::kNothing, true);
}

/// Checks what an existing path turned out to be; `status` becomes that.
int ErrorOfExisting(int descriptor, bool writing, struct stat& status) {
  if (fstat(descriptor, &status) != 0) return errno;
  if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) return EACCES;
  // Root may write what its owner may not; a read-only file stays protected.
  if (writing && (status.st_mode & S_IWUSR) == 0) return EACCES;
  return 0;
}

/// As openat(2), but without cutting a file.
int OpenUncut(int folder, const std::string& path, int flags, mode_t mode) {
  constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  return MoveUp(openat(folder, path.c_str(), (flags & ~O_TRUNC) | kAlways, mode));
}

int CreateNew(int folder, const std::string& path, int flags, mode_t mode, Share share) {
  const int descriptor = OpenUncut(folder, path, flags | O_EXCL, mode);
  if (descriptor < 0) return -1;
  lateLock = share != Share::kAnything ? LateLock{descriptor, false} : LateLock{};
  return descriptor;
}

/// New content would show under names outside the caller's folder, or be run
/// with the rights of the file's owner.
bool MustNotBeRewritten(const struct stat& status) {
  return S_ISREG(status.st_mode) &&
         (status.st_nlink > 1 || (status.st_mode & (S_ISUID | S_ISGID)) != 0);
}

int Cut(int descriptor, const struct stat& existing) {
  if (MustNotBeRewritten(existing)) return CloseWithErrno(descriptor, EMLINK);
  return ftruncate(descriptor, 0) == 0 ? descriptor : CloseWithErrno(descriptor, errno);
}

}  // namespace

int MoveUp(int descriptor) {
  if (descriptor < 0 || descriptor >= kFirstDescriptor) return descriptor;
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstDescriptor);
  const int error = errno;
  close(descriptor);
  errno = error;
  return moved;
}

int OpenDescriptorAt(int folder, const std::string& path, int flags, mode_t mode, Share share) {
  if ((flags & O_EXCL) != 0) return CreateNew(folder, path, flags, mode, share);
  const int descriptor = OpenUncut(folder, path, flags, mode);
  if (descriptor < 0) return -1;
  const bool writing = (flags & O_ACCMODE) != O_RDONLY;
  struct stat existing {};
  const int error = ErrorOfExisting(descriptor, writing, existing);
  if (error != 0) return CloseWithErrno(descriptor, error);
  lateLock = {};
  if (LockedByOthers(descriptor, share, writing)) return CloseWithErrno(descriptor, EWOULDBLOCK);
  return (flags & O_TRUNC) != 0 ? Cut(descriptor, existing) : descriptor;
}

int OpenDescriptor(const std::string& path, int flags, Share share) {
  return OpenDescriptorAt(AT_FDCWD, path, flags, 0666, share);
}

}  // namespace morvunp::platform

namespace {

/// A search for one exact path holds nothing, so all share one handle.
constexpr char exactSearch = 0;

using platform::DescriptorOf;
using platform::FailWithErrno;

int OpenFlags(DWORD access, DWORD flags) {
  int result = (access & GENERIC_WRITE) == 0  ? O_RDONLY
               : (access & GENERIC_READ) == 0 ? O_WRONLY
                                              : O_RDWR;
  if ((flags & FILE_FLAG_OPEN_REPARSE_POINT) != 0) result |= O_NOFOLLOW;
  return result;
}

platform::Share ShareOf(DWORD share) {
  if ((share & FILE_SHARE_WRITE) != 0) return platform::Share::kAnything;
  if ((share & FILE_SHARE_READ) != 0) return platform::Share::kReadersOnly;
  return platform::Share::kNothing;
}

FILETIME FileTimeOf(const timespec& time) {
  return platform::FileTimeOfTimespec(time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec));
}

template <class Call>
ssize_t RetryInterrupted(Call call) {
  ssize_t result = 0;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

}  // namespace

timespec platform::TimespecOf(const FILETIME* time) {
  if (time == nullptr) return {0, UTIME_OMIT};
  const auto units = ULONGLONG{time->dwHighDateTime} << 32 | time->dwLowDateTime;
  return {SecondsOfFileTime(*time), static_cast<long>(units % 10'000'000 * 100)};
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD,
                   DWORD flags, HANDLE) {
  const int descriptor = platform::OpenDescriptor(platform::ToNativePath(path),
                                                  OpenFlags(access, flags), ShareOf(share));
  if (descriptor >= 0) return platform::HandleOf(descriptor);
  FailWithErrno(errno);
  return INVALID_HANDLE_VALUE;
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD length, DWORD* read, OVERLAPPED* position) {
  const int descriptor = DescriptorOf(file);
  const ssize_t result = RetryInterrupted([&] {
    if (position == nullptr) return ::read(descriptor, buffer, length);
    const auto offset = std::uint64_t{position->OffsetHigh} << 32 | position->Offset;
    return pread(descriptor, buffer, length, static_cast<off_t>(offset));
  });
  *read = result > 0 ? static_cast<DWORD>(result) : 0;
  return result >= 0 ? TRUE : FailWithErrno(errno);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD length, DWORD* written, OVERLAPPED*) {
  const auto* bytes = static_cast<const char*>(buffer);
  *written = 0;
  if (!platform::TakeLateLock(DescriptorOf(file))) return FailWithErrno(EWOULDBLOCK);
  while (*written < length) {
    const ssize_t result = RetryInterrupted(
        [&] { return write(DescriptorOf(file), bytes + *written, length - *written); });
    if (result < 0) return FailWithErrno(errno);
    if (result == 0) break;
    *written += static_cast<DWORD>(result);
  }
  return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG low, LONG* high, DWORD method) {
  static_assert(FILE_BEGIN == SEEK_SET && FILE_CURRENT == SEEK_CUR && FILE_END == SEEK_END);
  const std::int64_t distance = std::int64_t{*high} << 32 | static_cast<DWORD>(low);
  const off_t position = lseek(DescriptorOf(file), distance, static_cast<int>(method));
  if (position < 0) {
    FailWithErrno(errno);
    return INVALID_SET_FILE_POINTER;
  }
  *high = static_cast<LONG>(position >> 32);
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(position);
}

DWORD GetFileSize(HANDLE file, DWORD* high) {
  struct stat status {};
  if (fstat(DescriptorOf(file), &status) != 0) {
    FailWithErrno(errno);
    return INVALID_FILE_SIZE;
  }
  const auto size = static_cast<ULONGLONG>(status.st_size);
  *high = static_cast<DWORD>(size >> 32);
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(size);
}

BOOL SetEndOfFile(HANDLE file) {
  const off_t position = lseek(DescriptorOf(file), 0, SEEK_CUR);
  if (position < 0 || ftruncate(DescriptorOf(file), position) != 0) return FailWithErrno(errno);
  return TRUE;
}

BOOL CloseHandle(HANDLE file) {
  if (platform::lateLock.descriptor == DescriptorOf(file)) platform::lateLock = {};
  return close(DescriptorOf(file)) == 0 ? TRUE : FailWithErrno(errno);
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
  if (mkdir(platform::ToNativePath(path).c_str(), 0777) == 0) return TRUE;
  const bool exists = errno == EEXIST;
  FailWithErrno(errno);
  if (exists) SetLastError(ERROR_ALREADY_EXISTS);
  return FALSE;
}

HANDLE FindFirstFileW(LPCWSTR path, WIN32_FIND_DATAW* data) {
  const std::string native = platform::ToNativePath(path);
  struct stat status {};
  if (lstat(native.c_str(), &status) != 0) {
    FailWithErrno(errno);
    return INVALID_HANDLE_VALUE;
  }
  struct stat behind {};
  const bool isLinkToFile =
      S_ISLNK(status.st_mode) && stat(native.c_str(), &behind) == 0 && S_ISREG(behind.st_mode);
  if (isLinkToFile) status = behind;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  data->dwFileAttributes = GetFileAttributesW(path);
  data->ftCreationTime = FileTimeOf(status.st_ctim);
  data->ftLastAccessTime = FileTimeOf(status.st_atim);
  data->ftLastWriteTime = FileTimeOf(status.st_mtim);
  data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data->nFileSizeLow = static_cast<DWORD>(size);
  const std::wstring_view whole = path;
  const std::wstring_view name = whole.substr(whole.rfind(L'\\') + 1);
  data->cFileName[name.copy(data->cFileName, std::size(data->cFileName) - 1)] = 0;
  return const_cast<char*>(&exactSearch);
}

BOOL FindClose(HANDLE) { return TRUE; }

BOOL SetFileTime(HANDLE file, const FILETIME*, const FILETIME* lastAccess,
                 const FILETIME* lastWrite) {
  const timespec times[] = {platform::TimespecOf(lastAccess), platform::TimespecOf(lastWrite)};
  return futimens(DescriptorOf(file), times) == 0 ? TRUE : FailWithErrno(errno);
}

namespace {

platform::FileIdentity IdentityIf(bool isKnown, const struct stat& status) {
  if (!isKnown) return {};
  return {status.st_dev, status.st_ino};
}

}  // namespace

platform::FileIdentity platform::IdentityOf(HANDLE file) {
  struct stat status {};
  return IdentityIf(fstat(DescriptorOf(file), &status) == 0, status);
}

platform::FileIdentity platform::IdentityOfPath(const std::wstring& path) {
  struct stat status {};
  return IdentityIf(stat(ToNativePath(path).c_str(), &status) == 0, status);
}
