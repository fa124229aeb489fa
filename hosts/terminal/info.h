// The command "info".
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace terminal {

/// Writes the library's text about the whole archive, or about each of
/// `paths`. The exit code. Throws CommandError.
int Info(const std::string& archivePath, const std::vector<std::string>& paths,
         const std::optional<std::wstring>& password);

}  // namespace terminal
