#include "extract.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "archive.h"
#include "exitcode.h"
#include "interrupt.h"
#include "outcomereport.h"
#include "output.h"
#include "plan.h"
#include "platform/text.h"
#include "progressline.h"
#include "question.h"
#include "selection.h"
#include "terminalinterface.h"
#include "text.h"
#include "unpackwatch.h"
#include "unpackwindows.h"

namespace terminal {
namespace {

INIUNPACK SettingsOf(const ExtractCommand& command) {
  INIUNPACK settings;
  settings.bUnpackFileNoPath = command.isFlat ? 1 : 0;
  settings.bUnpackArchiveNoPaths = command.isFlat ? 1 : 0;
  settings.bUnpackFolderRelative = command.isRelative ? 1 : 0;
  settings.bConfirmReplace = command.overwrite == Overwrite::kAll ? 0 : 1;
  return settings;
}

RunKind KindOf(const Selection& selection, bool isFlat) {
  if (!selection.isFolder) return RunKind::kFile;
  return isFlat ? RunKind::kFolderFlat : RunKind::kFolder;
}

struct RunList {
  std::vector<Run> runs;
  bool allFound = true;
};

/// Names every path that the archive lacks on stderr.
RunList RunsOf(Archive& archive, const ExtractCommand& command) {
  if (command.paths.empty()) return {.runs = {{RunKind::kArchive, {}}}};
  RunList list;
  const auto selections = FindSelections(archive, command.paths);
  for (std::size_t i = 0; i < selections.size(); ++i) {
    if (!selections[i]) {
      PrintError(ShownNativePath(command.paths[i]) + ": not in the archive");
      list.allFound = false;
    } else if (std::find(selections.begin(), selections.begin() + static_cast<std::ptrdiff_t>(i),
                         selections[i]) == selections.begin() + static_cast<std::ptrdiff_t>(i)) {
      list.runs.push_back({KindOf(*selections[i], command.isFlat), selections[i]->path});
    }
  }
  return list;
}

[[noreturn]] void ThrowDirectoryError(const std::string& directory, int error) {
  throw CommandError("cannot unpack to " + ShownNativePath(directory) + ": " +
                     std::strerror(error));
}

/// Makes a folder and those above it. 0 when it exists afterwards, else an
/// errno value.
int CreateDirectories(const std::string& directory) {
  for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
    const std::string upper = directory.substr(0, end);
    struct stat status {};
    if (mkdir(upper.c_str(), 0777) != 0) {
      // A folder on the way may exist where one is not allowed to make any.
      const int error = errno;
      if (stat(upper.c_str(), &status) != 0) return error;
      if (!S_ISDIR(status.st_mode)) return ENOTDIR;
    }
    if (end == std::string::npos) return 0;
  }
}

/// Absolute path of the folder to unpack to, in the library's form; the folder
/// is created when it is missing.
std::wstring TargetOf(const std::string& directory) {
  if (const int error = CreateDirectories(directory)) ThrowDirectoryError(directory, error);
  const std::unique_ptr<char, decltype(&std::free)> absolute(realpath(directory.c_str(), nullptr),
                                                             &std::free);
  if (!absolute) ThrowDirectoryError(directory, errno);
  std::wstring target = platform::ToLibraryPath(absolute.get());
  if (target.ends_with(L'\\')) target.pop_back();
  return target;
}

/// True for the formats whose UnpackCurrentFile writes the item that the walk
/// has reached. A cabinet finds the items of a run by their paths.
template <class U>
constexpr bool kUnpacksAtCursor = !std::is_same_v<U, CCabUnpacker>;

/// UnpackFolder always keeps folders, so that a flat run takes each file.
template <class U>
void UnpackFlat(U& unpacker, const Request& request, const Run& run,
                const TerminalInterface& interface) {
  std::vector<std::wstring> paths;
  WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
    const Item item = ItemOf(record);
    if (IsContinuation(record) || !PlaceInRun(request, run, item)) return true;
    if constexpr (kUnpacksAtCursor<U>) {
      unpacker.UnpackCurrentFile(std::wstring(item.name), request.target);
    } else {
      paths.emplace_back(item.path);
    }
    return !interface.Stopped();
  });
  for (const std::wstring& path : paths) {
    if (interface.Stopped()) return;
    unpacker.UnpackFile(path, request.target);
  }
}

/// UnpackFile takes the first file with this path in any case; one that comes
/// later and is spelled exactly so has to be reached by the walk.
template <class U>
void UnpackOneFile(U& unpacker, const Request& request, const Run& run) {
  bool isFirst = true;
  std::optional<OutputPlace> place;
  WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
    const Item item = ItemOf(record);
    place = PlaceInRun(request, run, item);
    if (!place && _wcsicmp(item.path.c_str(), run.path.c_str()) == 0)
      isFirst = !kUnpacksAtCursor<U>;
    if (!place || isFirst) return !place;
    if (MakeOutputFolder(place->folder, request.target)) {
      unpacker.UnpackCurrentFile(std::wstring(item.name), place->folder);
    }
    return false;
  });
  if (place && isFirst) unpacker.UnpackFile(run.path, request.target);
}

template <class U>
void UnpackRun(U& unpacker, const Request& request, const Run& run,
               const TerminalInterface& interface) {
  switch (run.kind) {
    case RunKind::kArchive:
      unpacker.UnpackArchive(request.target);
      return;
    case RunKind::kFolder:
      unpacker.UnpackFolder(run.path, request.target);
      return;
    case RunKind::kFolderFlat:
      UnpackFlat(unpacker, request, run, interface);
      return;
    case RunKind::kFile:
      UnpackOneFile(unpacker, request, run);
      return;
  }
}

std::string Counted(std::uint64_t count, const char* one, const char* many) {
  return GroupedNumber(count) + " " + (count == 1 ? one : many);
}

int PrintTotals(const Totals& totals, const std::string& directory, int exitCode) {
  StandardOutput output;
  output.Text() = Counted(totals.files, "file", "files") + ", " +
                  Counted(totals.folders, "folder", "folders") + ", " +
                  Counted(totals.bytes, "byte", "bytes") + " unpacked to " +
                  ShownNativePath(directory) + "\n";
  return output.Finish(exitCode);
}

}  // namespace

int Extract(const ExtractCommand& command) {
  UnpackWatch watch;
  ProgressLine line(!command.isQuiet && isatty(STDERR_FILENO) == 1);
  PasswordAnswer password(command.password);
  ItemProblems problems;
  TerminalInterface interface(watch, line, password, command.overwrite == Overwrite::kNone);
  UnpackWindows windows(watch, line);
  interface.SetProgressWindow(windows.Progress());
  Archive archive = OpenArchiveFile(command.archive, {SettingsOf(command), windows.FileTree(),
                                                      windows.Progress(), &problems, &password});

  RunList list = RunsOf(archive, command);
  if (list.runs.empty()) return kExitIncomplete;
  const Request request{SettingsOf(command), TargetOf(command.directory), std::move(list.runs)};
  const InterruptGuard guard;
  watch.Start(MakePlan(archive, request));
  line.Start(watch.TotalBytes());
  for (const Run& run : request.runs) {
    if (interface.Stopped()) break;
    WithUnpacker(archive, [&](auto& unpacker) {
      UnpackRun(unpacker, request, run, interface);
      if (ReasonOfGap(unpacker)) problems.EndRun();
    });
  }
  line.Clear();

  const Totals totals =
      ReportOutcome(archive, request, watch,
                    {.stopped = interface.Stopped(),
                     .keptUnasked = command.overwrite == Overwrite::kAsk && !CanAsk(),
                     .problems = &problems});
  if (interface.Stopped()) return kExitInterrupted;
  const bool isListWhole = CheckComplete(archive, command.archive) == kExitComplete;
  const bool isComplete = list.allFound && totals.missing == 0 && isListWhole;
  const int exitCode = isComplete ? kExitComplete : kExitIncomplete;
  return command.isQuiet ? exitCode : PrintTotals(totals, command.directory, exitCode);
}

}  // namespace terminal
