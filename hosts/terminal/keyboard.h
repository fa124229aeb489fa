// Single bytes from the person at the terminal.
#pragma once

#include <signal.h>

#include <optional>

namespace terminal {

inline constexpr char kEscapeKey = '\x1b';

/// While it lives, interruptions are held back except where the keyboard
/// waits, so that none can slip in between the look at it and the wait.
class Keyboard {
 public:
  Keyboard();
  ~Keyboard();
  Keyboard(const Keyboard&) = delete;
  Keyboard& operator=(const Keyboard&) = delete;

  /// The next byte of standard input; none when interrupted and at the end. Reads
  /// no further: what follows belongs to the next question.
  std::optional<char> Next();

 private:
  bool WaitForInput() const;

  sigset_t previous_{};
};

}  // namespace terminal
