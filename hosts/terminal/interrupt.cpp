#include "interrupt.h"

#include <unistd.h>

#include <atomic>

#include "exitcode.h"

namespace terminal {
namespace {

std::atomic<bool> pending{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler uses it");

void OnInterrupt(int) {
  if (!pending.exchange(true)) return;
  // The shell's prompt should not follow the progress line.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
  _exit(kExitInterrupted);
}

}  // namespace

InterruptGuard::InterruptGuard() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, &previous_);
  if (previous_.sa_handler == SIG_IGN) sigaction(SIGINT, &previous_, nullptr);
}

InterruptGuard::~InterruptGuard() { sigaction(SIGINT, &previous_, nullptr); }

bool InterruptPending() { return pending.load(std::memory_order_relaxed); }

void ForgetInterrupt() { pending = false; }

}  // namespace terminal
