#include "question.h"

#include <poll.h>
#include <signal.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>

#include "interrupt.h"
#include "output.h"

namespace terminal {
namespace {

constexpr char kEscape = '\x1b';

/// Holds Ctrl-C back except inside ppoll, so that it cannot slip in between
/// the look at the flag and the wait.
class BlockedInterrupt {
 public:
  BlockedInterrupt() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &previous_);
  }
  ~BlockedInterrupt() { sigprocmask(SIG_SETMASK, &previous_, nullptr); }
  BlockedInterrupt(const BlockedInterrupt&) = delete;
  BlockedInterrupt& operator=(const BlockedInterrupt&) = delete;

  /// True when standard input has something to read, false after Ctrl-C.
  bool WaitForInput() const {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!InterruptPending()) {
      const int ready = ppoll(&input, 1, nullptr, &previous_);
      if (ready > 0) return true;
      if (ready < 0 && errno != EINTR) return true;
    }
    return false;
  }

 private:
  sigset_t previous_{};
};

/// None after Ctrl-C or at the end of the input. Reads single bytes: what
/// follows the line belongs to the next question.
std::optional<std::string> ReadLine() {
  const BlockedInterrupt blocked;
  std::string line;
  while (blocked.WaitForInput()) {
    char c = 0;
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    if (c == '\n') return line;
    line += c;
  }
  return std::nullopt;
}

std::string Trimmed(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

bool Names(const std::string& line, const Choice& choice) {
  const char key[] = {choice.key, '\0'};
  return strcasecmp(line.c_str(), key) == 0 || strcasecmp(line.c_str(), choice.label.c_str()) == 0;
}

std::optional<std::size_t> FindChoice(const std::string& line, const std::vector<Choice>& choices,
                                      std::size_t defaultChoice) {
  if (line.empty()) return defaultChoice;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (Names(line, choices[i])) return i;
  }
  return std::nullopt;
}

std::string Prompt(const std::vector<Choice>& choices, std::size_t defaultChoice) {
  std::string prompt;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (i > 0) prompt += "  ";
    prompt += std::string("[") + choices[i].key + "] " + choices[i].label;
    if (i == defaultChoice) prompt += " (default)";
  }
  return prompt + ": ";
}

}  // namespace

bool CanAsk() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

std::optional<std::size_t> Ask(const std::string& text, const std::vector<Choice>& choices,
                               std::size_t defaultChoice) {
  PrintToStderr(text + "\n");
  for (;;) {
    PrintToStderr(Prompt(choices, defaultChoice));
    const auto line = ReadLine();
    if (!line) {
      ForgetInterrupt();
      PrintToStderr("\n");
      return std::nullopt;
    }
    if (line->find(kEscape) != std::string::npos) return std::nullopt;
    if (const auto found = FindChoice(Trimmed(*line), choices, defaultChoice)) return found;
  }
}

}  // namespace terminal
