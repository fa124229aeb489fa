// What the command writes to its two streams.
#pragma once

#include <string>
#include <string_view>

namespace terminal {

/// Standard output, gathered in large blocks. Callers append to Text() and
/// call Pass() now and then.
class StandardOutput {
 public:
  std::string& Text() { return text_; }

  /// Writes the text when enough has gathered. False when writing has failed:
  /// nothing more can be delivered.
  bool Pass();

  /// Writes what is left. The exit code of the command: a reader that has gone
  /// away wanted no more, but any other failure is named on stderr and makes
  /// `exitCode` at least kExitIncomplete.
  int Finish(int exitCode);

 private:
  bool Write();

  std::string text_;
  int error_ = 0;
};

/// Writes a line "morvunp: text" to stderr.
void PrintError(std::string_view text);

/// Writes the text as it is to stderr.
void PrintToStderr(std::string_view text);

}  // namespace terminal
