// Opens archives for the commands, and says what is wrong with them.
#pragma once

#include <string>

#include "hosts/common/archive.h"

namespace terminal {

/// Throws CommandError with the reason when the file at `path` is no archive
/// that can be used.
host::Archive OpenForCommand(const std::string& path, host::ArchiveSetup setup);

/// kExitComplete when the list of items is all that the archive holds;
/// otherwise says that it is cut or damaged and gives kExitIncomplete.
int CheckComplete(host::Archive& archive, const std::string& path);

/// A reason as it is shown.
std::string ShownReason(const host::Reason& reason);

}  // namespace terminal
