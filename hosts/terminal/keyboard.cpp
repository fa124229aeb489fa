#include "keyboard.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "interrupt.h"

namespace terminal {

Keyboard::Keyboard() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : InterruptGuard::kSignals) sigaddset(&held, signal);
  sigprocmask(SIG_BLOCK, &held, &previous_);
}

Keyboard::~Keyboard() { sigprocmask(SIG_SETMASK, &previous_, nullptr); }

std::optional<char> Keyboard::Next() {
  while (WaitForInput()) {
    char c = 0;
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count == 1) return c;
    if (count == 0 || errno != EINTR) return std::nullopt;
  }
  return std::nullopt;
}

/// True when standard input has something to read, false when interrupted.
bool Keyboard::WaitForInput() const {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (!InterruptPending()) {
    const int ready = ppoll(&input, 1, nullptr, &previous_);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return true;
  }
  return false;
}

}  // namespace terminal
