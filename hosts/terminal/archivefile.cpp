#include "archivefile.h"

#include "exitcode.h"
#include "interrupt.h"
#include "output.h"
#include "text.h"

namespace terminal {

host::Archive OpenForCommand(const std::string& path, host::ArchiveSetup setup) {
  const auto shown = [&](const host::Reason& reason) {
    return ShownNativePath(path) + ": " + ShownReason(reason);
  };
  setup.onWrongPassword = [&](const host::Reason& reason) { PrintError(shown(reason)); };
  try {
    return host::OpenArchiveFile(path, setup);
  } catch (const host::OpenError& error) {
    throw CommandError(shown(error.reason), error.wasCancelled ? StoppedExitCode() : kExitUnusable);
  }
}

int CheckComplete(host::Archive& archive, const std::string& path) {
  const auto reason = host::ReasonOfGap(archive);
  if (!reason) return kExitComplete;
  PrintError(ShownNativePath(path) + ": " + ShownReason(*reason));
  return kExitIncomplete;
}

std::string ShownReason(const host::Reason& reason) {
  std::string text = reason.text;
  if (const std::size_t place = text.find("%1"); place != std::string::npos) {
    text.replace(place, 2, ShownPath(reason.path));
  }
  return reason.effect.empty() ? text : reason.effect + ": " + text;
}

}  // namespace terminal
