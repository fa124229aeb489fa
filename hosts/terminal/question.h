// Questions to the person at the terminal.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace terminal {

struct Choice {
  /// Lower case.
  char key;
  std::string label;
};

/// True when somebody can be asked: standard input and stderr are terminals.
bool CanAsk();

/// Writes `text` and the choices to stderr and reads lines until one names a
/// choice by its key or label. An empty line takes `defaultChoice`. None when
/// the user pressed Ctrl-C (which is then forgotten) or Esc, or at the end of
/// the input.
std::optional<std::size_t> Ask(const std::string& text, const std::vector<Choice>& choices,
                               std::size_t defaultChoice);

/// The same for a question of yes or no, whose default is no.
std::optional<bool> AskYesNo(const std::string& text);

}  // namespace terminal
