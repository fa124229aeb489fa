#include "info.h"

#include "archivefile.h"
#include "exitcode.h"
#include "output.h"
#include "selection.h"
#include "terminalinterface.h"
#include "text.h"

namespace terminal {
namespace {

using host::Archive;

int WriteSelections(Archive& archive, const std::string& archivePath,
                    const std::vector<std::string>& paths, StandardOutput& output) {
  const auto selections = FindSelections(archive, paths);
  int exitCode = CheckComplete(archive, archivePath);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (selections[i]) {
      const auto& [path, isFolder] = *selections[i];
      AppendPath(output.Text(), path);
      output.Text() += ": " + ShownText(host::SummaryOf(archive, path, isFolder)) + "\n";
    } else {
      PrintError(ShownNativePath(paths[i]) + ": not in the archive");
      exitCode = kExitIncomplete;
    }
  }
  return exitCode;
}

}  // namespace

int Info(const std::string& archivePath, const std::vector<std::string>& paths,
         const std::optional<std::wstring>& password) {
  ListingInterface interface(password);
  Archive archive = OpenForCommand(archivePath, {.password = &interface.password});
  StandardOutput output;
  if (!paths.empty()) {
    return output.Finish(interface.ExitCode(WriteSelections(archive, archivePath, paths, output)));
  }
  output.Text() += ShownText(host::SummaryOf(archive)) + "\n";
  return output.Finish(interface.ExitCode(CheckComplete(archive, archivePath)));
}

}  // namespace terminal
