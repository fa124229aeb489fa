// The library's dialogs and message boxes on a terminal.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "exitcode.h"
#include "hosts/common/stoprequest.h"
#include "hosts/common/unpackwatch.h"
#include "interrupt.h"
#include "morvunp/platform/userinterface.h"
#include "password.h"
#include "progressline.h"

namespace terminal {

/// The process's user interface while it lives. Without a terminal nobody is
/// asked: existing files are kept, and a request to stop is obeyed.
class TerminalInterface : public morvunp::platform::UserInterface {
 public:
  /// With `keepExisting` the question whether to replace a file is answered No
  /// without being shown.
  TerminalInterface(host::UnpackWatch& watch, ProgressLine& line, host::PasswordAnswer& password,
                    bool keepExisting);
  ~TerminalInterface() override;
  TerminalInterface(const TerminalInterface&) = delete;
  TerminalInterface& operator=(const TerminalInterface&) = delete;

  /// The window that a request to stop is posted to.
  void SetProgressWindow(HWND window) { progressWindow_ = window; }
  /// The user has cancelled or interrupted the unpack.
  bool Stopped() const { return stop_.Stopped(); }
  const host::StopRequest& Stop() const { return stop_; }

  bool RunDialog(CDialog& dialog) override;
  int ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) override;
  void RunPendingEvents() override;
  HICON FindIcon(const std::wstring&, bool) override { return nullptr; }

 private:
  void RunReplaceDialog(CDialog& dialog);
  void RunPasswordDialog(CDialog& dialog);
  void ShowProblem(const std::wstring& text);
  void AnswerStopRequest(const std::wstring& text);

  host::UnpackWatch& watch_;
  ProgressLine& line_;
  host::PasswordAnswer& password_;
  bool keepExisting_;
  bool canAsk_;
  HWND progressWindow_ = nullptr;
  host::StopRequest stop_;
};

/// The user interface of a command that unpacks nothing.
struct ListingInterface {
  explicit ListingInterface(std::optional<std::wstring> givenPassword)
      : password(AnswerOnTerminal(std::move(givenPassword))),
        interface(watch, line, password, true) {}

  /// StoppedExitCode() when a question was cancelled, else `exitCode`.
  int ExitCode(int exitCode) const { return interface.Stopped() ? StoppedExitCode() : exitCode; }

  host::UnpackWatch watch;
  ProgressLine line{false};
  host::PasswordAnswer password;
  TerminalInterface interface;
};

}  // namespace terminal
