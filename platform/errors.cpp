#include <cerrno>

#include "morvunp/platform/types.h"

namespace platform = morvunp::platform;

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;
thread_local int lastSystemError = 0;

DWORD ErrorOfErrno(int error) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case EWOULDBLOCK:
    case EBUSY:
    case ETXTBSY:
      return ERROR_SHARING_VIOLATION;
    case EOPNOTSUPP:
      return ERROR_NOT_SUPPORTED;
    case EEXIST:
      return ERROR_FILE_EXISTS;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case ELOOP:
      return ERROR_CANT_RESOLVE_FILENAME;
    default:
      return ERROR_GEN_FAILURE;
  }
}

}  // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD error) {
  lastError = error;
  lastSystemError = 0;
}

int platform::LastSystemError() { return lastSystemError; }

BOOL platform::FailWithErrno(int error) {
  lastError = ErrorOfErrno(error);
  lastSystemError = error;
  return FALSE;
}
