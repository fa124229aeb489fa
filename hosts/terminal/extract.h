// The command "extract".
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace terminal {

enum class Overwrite { kAsk, kAll, kNone };

struct ExtractCommand {
  std::string archive;
  /// What to unpack; everything when empty.
  std::vector<std::string> paths;
  std::string directory = ".";
  bool isFlat = false;
  bool isRelative = false;
  bool isQuiet = false;
  Overwrite overwrite = Overwrite::kAsk;
  /// None to ask for it.
  std::optional<std::wstring> password;
};

/// The exit code. Throws CommandError.
int Extract(const ExtractCommand& command);

}  // namespace terminal
