#include "output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "exitcode.h"

namespace terminal {
namespace {

constexpr std::size_t kBlock = std::size_t{256} * 1024;

/// 0 or an errno value.
int WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno != EINTR) return errno;
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace

bool StandardOutput::Pass() { return text_.size() < kBlock ? error_ == 0 : Write(); }

int StandardOutput::Finish(int exitCode) {
  if (Write() || error_ == EPIPE) return exitCode;
  PrintError(std::string("cannot write the output: ") + std::strerror(error_));
  return std::max(exitCode, kExitIncomplete);
}

bool StandardOutput::Write() {
  if (error_ == 0) error_ = WriteAll(STDOUT_FILENO, text_);
  text_.clear();
  return error_ == 0;
}

void PrintError(std::string_view text) {
  PrintToStderr(std::string("morvunp: ").append(text).append("\n"));
}

void PrintToStderr(std::string_view text) { WriteAll(STDERR_FILENO, text); }

}  // namespace terminal
