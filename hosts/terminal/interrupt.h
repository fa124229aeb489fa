// Ctrl-C, and the signals that ask the process to end, while unpacking.
//
// The first one is remembered, so that no half written file stays behind and,
// after Ctrl-C, the user can be asked. A second Ctrl-C, while the first is still
// remembered, ends the process at once. A repeated request to end changes
// nothing: a terminal that is closed sends two, from the shell and the system.
#pragma once

#include <signal.h>

#include <array>

namespace terminal {

/// Takes the signals over while it lives. One that the process was started
/// with ignored stays ignored.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

 private:
  std::array<struct sigaction, kSignals.size()> previous_{};
};

bool InterruptPending();
/// Ctrl-C has been dealt with. A request to end stays.
void ForgetInterrupt();

/// The process was asked to end: there is nobody to ask whether it should.
bool EndRequested();
/// What a run ends with that was stopped: 128 and the signal's number.
int StoppedExitCode();

}  // namespace terminal
