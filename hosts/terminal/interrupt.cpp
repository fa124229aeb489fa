#include "interrupt.h"

#include <unistd.h>

#include <atomic>

namespace terminal {
namespace {

constexpr int kSignalBase = 128;

std::atomic<bool> pending{false};
/// SIGTERM or SIGHUP once it came, else 0.
std::atomic<int> ending{0};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler uses them");

void OnSignal(int signal) {
  if (signal != SIGINT) ending = signal;
  if (signal != SIGINT || !pending.exchange(true)) return;
  // The shell's prompt should not follow the progress line.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
  _exit(StoppedExitCode());
}

}  // namespace

InterruptGuard::InterruptGuard() {
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], &action, &previous_[i]);
    if (previous_[i].sa_handler == SIG_IGN) sigaction(kSignals[i], &previous_[i], nullptr);
  }
}

InterruptGuard::~InterruptGuard() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &previous_[i], nullptr);
}

bool InterruptPending() { return pending.load(std::memory_order_relaxed) || EndRequested(); }

void ForgetInterrupt() { pending = false; }

bool EndRequested() { return ending.load(std::memory_order_relaxed) != 0; }

int StoppedExitCode() { return kSignalBase + (EndRequested() ? ending.load() : SIGINT); }

}  // namespace terminal
