// Ctrl-C while unpacking.
//
// The first one is remembered, so that the user can be asked and no half
// written file stays behind. A second one, while the first is still
// remembered, ends the process at once.
#pragma once

#include <signal.h>

namespace terminal {

/// Takes Ctrl-C over while it lives. A process that was started with Ctrl-C
/// ignored keeps ignoring it.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  struct sigaction previous_ {};
};

bool InterruptPending();
void ForgetInterrupt();

}  // namespace terminal
