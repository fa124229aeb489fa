// The terminal command as a process, with and without a terminal.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

using Arguments = std::vector<std::string>;

struct Result {
  int exitCode = -1;
  std::string output;
  std::string errors;
};

enum class Process {
  kUsual,
  /// An ordinary user's, to whose files the umask gives no read bit.
  kCannotReadBack,
  /// In a container that refuses to open paths below a folder with one call.
  kWithoutOpenat2
};

/// The exit code where such a process cannot be had.
inline constexpr int kNoSuchProcess = 126;

/// Runs the command without a terminal; `input` is its standard input.
Result RunCommand(const Arguments& arguments, const std::string& input = {},
                  Process kind = Process::kUsual);

/// The command on a terminal of its own.
class OnTerminal {
 public:
  explicit OnTerminal(const Arguments& arguments);
  ~OnTerminal();
  OnTerminal(const OnTerminal&) = delete;
  OnTerminal& operator=(const OnTerminal&) = delete;

  void Type(const std::string& text);
  void Send(int signal);

  /// Waits until `text` has appeared after what was awaited before.
  bool Await(const std::string& text);

  int Finish();

  const std::string& Shown() const { return shown_; }

 private:
  bool ReadSome();

  int terminal_ = -1;
  int process_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

}  // namespace testsupport
