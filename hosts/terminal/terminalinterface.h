// The library's dialogs and message boxes on a terminal.
#pragma once

#include <chrono>

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
  TerminalInterface(UnpackWatch& watch, ProgressLine& line, bool keepExisting);
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
  bool AnswerStopRequest(const std::wstring& text);

  UnpackWatch& watch_;
  ProgressLine& line_;
  bool keepExisting_;
  bool canAsk_;
  HWND progressWindow_ = nullptr;
  bool stopRequested_ = false;
  bool stopped_ = false;
  Clock::time_point lastRequest_;
};

}  // namespace terminal
