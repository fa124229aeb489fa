// The library's dialogs and message boxes on a terminal.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "exitcode.h"
#include "passwordanswer.h"
#include "platform/userinterface.h"
#include "progressline.h"
#include "unpackwatch.h"

namespace terminal {

/// The process's user interface while it lives. Without a terminal nobody is
/// asked: existing files are kept, and a request to stop is obeyed.
class TerminalInterface : public platform::UserInterface {
 public:
  /// With `keepExisting` the question whether to replace a file is answered No
  /// without being shown.
  TerminalInterface(UnpackWatch& watch, ProgressLine& line, PasswordAnswer& password,
                    bool keepExisting);
  ~TerminalInterface() override;
  TerminalInterface(const TerminalInterface&) = delete;
  TerminalInterface& operator=(const TerminalInterface&) = delete;

  /// The window that a request to stop is posted to.
  void SetProgressWindow(HWND window) { progressWindow_ = window; }
  /// The user has cancelled or interrupted the unpack.
  bool Stopped() const { return stopped_; }

  bool RunDialog(CDialog& dialog) override;
  int ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) override;
  void RunPendingEvents() override;
  HICON FindIcon(const std::wstring&, bool) override { return nullptr; }

 private:
  using Clock = std::chrono::steady_clock;

  void RunReplaceDialog(CDialog& dialog);
  void RunPasswordDialog(CDialog& dialog, UINT edit);
  void ShowProblem(const std::wstring& text);
  bool AnswerStopRequest(const std::wstring& text);

  UnpackWatch& watch_;
  ProgressLine& line_;
  PasswordAnswer& password_;
  bool keepExisting_;
  bool canAsk_;
  HWND progressWindow_ = nullptr;
  bool stopRequested_ = false;
  bool stopped_ = false;
  Clock::time_point lastRequest_;
};

/// The user interface of a command that unpacks nothing.
struct ListingInterface {
  explicit ListingInterface(std::optional<std::wstring> givenPassword)
      : password(std::move(givenPassword)), interface(watch, line, password, true) {}

  /// kExitInterrupted when a question was cancelled, else `exitCode`.
  int ExitCode(int exitCode) const { return interface.Stopped() ? kExitInterrupted : exitCode; }

  UnpackWatch watch;
  ProgressLine line{false};
  PasswordAnswer password;
  TerminalInterface interface;
};

}  // namespace terminal
