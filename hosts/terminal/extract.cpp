#include "extract.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "archivefile.h"
#include "exitcode.h"
#include "hosts/common/outcomereport.h"
#include "hosts/common/unpackrun.h"
#include "hosts/common/unpackwindows.h"
#include "interrupt.h"
#include "morvunp/platform/text.h"
#include "output.h"
#include "password.h"
#include "progressline.h"
#include "question.h"
#include "selection.h"
#include "terminalinterface.h"
#include "text.h"

namespace terminal {
namespace {

using host::Item;
using host::Reason;
using host::Request;
using host::Run;
using host::RunKind;
using host::Totals;

constexpr const char* kKept = "kept the existing file";
constexpr const char* kKeptUnasked =
    "kept the existing file (no terminal to ask; use --overwrite=all to replace)";

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
RunList RunsOf(host::Archive& archive, const ExtractCommand& command) {
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
  std::wstring target = morvunp::platform::ToLibraryPath(absolute.get());
  if (target.ends_with(L'\\')) target.pop_back();
  return target;
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
  host::UnpackWatch watch;
  ProgressLine line(!command.isQuiet && isatty(STDERR_FILENO) == 1);
  host::PasswordAnswer password = AnswerOnTerminal(command.password);
  TerminalInterface interface(watch, line, password, command.overwrite == Overwrite::kNone);
  host::UnpackWindows windows(watch);
  windows.onProgress = [&](unsigned) { line.Show(watch.BytesDone(), watch.CurrentName()); };
  interface.SetProgressWindow(windows.Progress());
  host::Archive archive = OpenForCommand(
      command.archive, {SettingsOf(command), windows.FileTree(), windows.Progress(),
                        [&](const morvunp::ItemReport& report) { watch.Told(report); }, &password});

  RunList list = RunsOf(archive, command);
  if (list.runs.empty()) return kExitIncomplete;
  const Request request{SettingsOf(command), TargetOf(command.directory), std::move(list.runs)};
  const InterruptGuard guard;
  watch.Start(host::MakePlan(archive, request));
  line.Start(watch.TotalBytes());
  host::UnpackRequest(archive, request, interface.Stop(), watch);
  line.Clear();

  const bool isUnasked = command.overwrite == Overwrite::kAsk && !CanAsk();
  const Totals totals =
      host::ReportOutcome(archive, request, watch, {.kept = {isUnasked ? kKeptUnasked : kKept}},
                          [](const Item& item, const Reason& reason) {
                            PrintError(ShownPath(item.path) + ": " + ShownReason(reason));
                          });
  if (interface.Stopped()) return StoppedExitCode();
  const bool isListWhole = CheckComplete(archive, command.archive) == kExitComplete;
  const bool isComplete = list.allFound && totals.missing == 0 && isListWhole;
  const int exitCode = isComplete ? kExitComplete : kExitIncomplete;
  return command.isQuiet ? exitCode : PrintTotals(totals, command.directory, exitCode);
}

}  // namespace terminal
