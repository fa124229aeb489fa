#include "archive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "exitcode.h"
#include "output.h"
#include "platform/text.h"
#include "text.h"

namespace terminal {
namespace {

std::string ReasonOfErrno(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "no such file";
    case EACCES:
    case EPERM:
      return "no permission to read it";
    default:
      return std::strerror(error);
  }
}

/// Why a file of this kind cannot be an archive; none when it can.
std::optional<std::string> ReasonOfKind(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return "it is a folder";
  if (S_ISBLK(status.st_mode)) return std::nullopt;
  if (!S_ISREG(status.st_mode)) return "not a regular file";
  if (status.st_size == 0) return "the file is empty";
  return std::nullopt;
}

/// The unpackers answer only "no", so everything that the system can tell
/// about the file is found out before they are asked.
std::optional<std::string> ReasonAgainstFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return ReasonOfErrno(errno);
  if (auto reason = ReasonOfKind(status)) return reason;
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return ReasonOfErrno(errno);
  close(descriptor);
  return std::nullopt;
}

template <class U>
std::unique_ptr<U> TryFormat(const std::wstring& path, const ArchiveSetup& setup) {
  auto unpacker = std::make_unique<U>();
  unpacker->SetIni(setup.settings);
  unpacker->SetIniYesToAll(INIYESTOALL{});
  unpacker->SetWndFileTree(setup.fileTree);
  unpacker->SetHandleDialogProgress(setup.progressWindow);
  if (!unpacker->OpenArchive(path)) return nullptr;
  return unpacker;
}

/// Tries the formats of the variant in their order.
template <class... U>
std::optional<std::variant<std::unique_ptr<U>...>> TryFormats(
    std::type_identity<std::variant<std::unique_ptr<U>...>>, const std::wstring& path,
    const ArchiveSetup& setup) {
  std::optional<std::variant<std::unique_ptr<U>...>> archive;
  const auto tryOne = [&](std::unique_ptr<U>... none) {
    const auto isOpened = [&](auto& unpacker) {
      if (unpacker) archive = std::move(unpacker);
      return archive.has_value();
    };
    static_cast<void>((isOpened(none = TryFormat<U>(path, setup)) || ...));
  };
  tryOne(std::unique_ptr<U>{}...);
  return archive;
}

std::optional<Archive> TryAllFormats(const std::string& path, const ArchiveSetup& setup) {
  try {
    return TryFormats(std::type_identity<Archive>{}, platform::ToLibraryPath(path), setup);
  } catch (const CAtlException&) {
    // The only error of this kind that leaves an open.
    throw CommandError(ShownNativePath(path) + ": a recorded date is impossible");
  } catch (const CInvalidArgException&) {
    throw CommandError(ShownNativePath(path) + ": damaged: it names a partition that it lacks");
  }
}

}  // namespace

Archive OpenArchiveFile(const std::string& path, const ArchiveSetup& setup) {
  if (const auto reason = ReasonAgainstFile(path)) {
    throw CommandError(ShownNativePath(path) + ": " + *reason);
  }
  SetLastError(ERROR_SUCCESS);
  auto archive = TryAllFormats(path, setup);
  if (archive) return std::move(*archive);
  if (GetLastError() == ERROR_SHARING_VIOLATION) {
    throw CommandError(ShownNativePath(path) + ": another program is writing to it");
  }
  if (GetLastError() == ERROR_MOD_NOT_FOUND) {
    throw CommandError(ShownNativePath(path) + ": not an archive, or one whose module is missing");
  }
  throw CommandError(ShownNativePath(path) + ": not an archive that morvunp knows, or damaged");
}

int CheckComplete(Archive& archive, const std::string& path) {
  if (!WithUnpacker(archive, [](auto& unpacker) { return IsListCut(unpacker); })) {
    return kExitComplete;
  }
  PrintError(ShownNativePath(path) + ": cut or damaged: not all of its items could be listed");
  return kExitIncomplete;
}

}  // namespace terminal
