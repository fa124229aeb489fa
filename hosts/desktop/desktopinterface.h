// Where the library's dialogs and message pump meet Qt.
#pragma once

#include <QIcon>
#include <memory>
#include <vector>

#include "hosts/common/passwordanswer.h"
#include "hosts/common/stoprequest.h"
#include "hosts/common/unpackwatch.h"
#include "hosts/desktop/fileicons.h"
#include "morvunp/platform/framework.h"
#include "morvunp/platform/userinterface.h"

class QWidget;

namespace desktop {

/// What the questions of a running unpack are about.
struct RunningUnpack {
  host::UnpackWatch& watch;
  host::StopRequest& stop;
  HWND progressWindow;
};

/// The process's user interface while it lives.
class DesktopInterface : public morvunp::platform::UserInterface {
 public:
  /// Dialogs belong to `mainWindow`, or to the window that is active above it.
  DesktopInterface(QWidget& mainWindow, FileIcons& fileIcons);
  ~DesktopInterface() override;
  DesktopInterface(const DesktopInterface&) = delete;
  DesktopInterface& operator=(const DesktopInterface&) = delete;

  /// A password source that asks with the library's own dialog.
  host::PasswordAnswer MakePasswordAnswer();
  /// Who answers questions for passwords; null when none can come.
  void SetPasswordAnswer(host::PasswordAnswer* password) { password_ = password; }
  /// Null when nothing is unpacked.
  void SetRunning(RunningUnpack* running) { running_ = running; }

  bool RunDialog(CDialog& dialog) override;
  int ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) override;
  void RunPendingEvents() override;
  HICON FindIcon(const std::wstring& path, bool byTypeOnly) override;

 private:
  QWidget* Owner() const;
  /// Shows the dialog; the id of the button that ended it.
  UINT Show(CDialog& dialog);
  void RunPasswordDialog(CDialog& dialog);
  std::optional<std::wstring> AskPassword();
  bool WantsMessage() const;

  QWidget& mainWindow_;
  FileIcons& fileIcons_;
  CWnd mainWindowObject_;
  host::PasswordAnswer* password_ = nullptr;
  RunningUnpack* running_ = nullptr;
  /// The question for a password that the library is asking.
  CDialog* passwordDialog_ = nullptr;
  /// Icons that were handed to the dialog in hand.
  std::vector<std::unique_ptr<QIcon>> icons_;
};

}  // namespace desktop
