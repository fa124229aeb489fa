// The command "list".
#pragma once

#include <optional>
#include <string>

namespace terminal {

/// Writes the items of an archive to standard output, as a table or as one
/// JSON object. The exit code. Throws CommandError.
int List(const std::string& archivePath, bool asJson, const std::optional<std::wstring>& password);

}  // namespace terminal
