// How the command ends, and the error that ends it early.
#pragma once

#include <stdexcept>
#include <string>

namespace terminal {

inline constexpr int kExitComplete = 0;
/// Something was skipped, refused or failed; each is named on stderr.
inline constexpr int kExitIncomplete = 1;
/// The archive cannot be opened or the command line is wrong.
inline constexpr int kExitUnusable = 2;
// A run that was stopped ends with StoppedExitCode() of interrupt.h.

/// Ends the command; what() is the reason, fit for a terminal.
class CommandError : public std::runtime_error {
 public:
  explicit CommandError(const std::string& reason, int exitCode = kExitUnusable)
      : std::runtime_error(reason), exitCode_(exitCode) {}

  int ExitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

}  // namespace terminal
