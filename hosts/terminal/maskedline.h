// A line that is typed unseen.
#pragma once

#include <optional>
#include <string>

namespace terminal {

/// Writes the prompt to stderr and reads a line from the terminal, showing an
/// asterisk for each character. None after Ctrl-C (which is then forgotten),
/// Esc, or at the end of the input.
std::optional<std::string> AskMasked(const std::string& prompt);

}  // namespace terminal
