// A host without a screen: answers by script and remembers what it was shown.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "morvunp/platform/userinterface.h"
#include "support/rooms.h"

namespace testsupport {

/// One thing that the user does with an open dialog.
struct DialogAnswer {
  enum class Kind { kPress, kEscape, kCannotRun };

  static DialogAnswer Press(UINT button) { return {Kind::kPress, button, {}}; }
  static DialogAnswer Escape() { return {Kind::kEscape, 0, {}}; }
  /// The dialog cannot be shown at all.
  static DialogAnswer CannotRun() { return {Kind::kCannotRun, 0, {}}; }

  Kind kind;
  UINT button;
  /// What was typed into edit controls before.
  std::map<UINT, std::wstring> typed;
};

/// A dialog as it was when it appeared.
struct ShownDialog {
  UINT templateId;
  std::map<UINT, std::wstring> texts;
};

struct ShownMessageBox {
  std::wstring text;
  std::wstring caption;
  UINT type;
};

struct ProgressMessage {
  WPARAM percentage;
  /// Empty when the message named no file.
  std::wstring name;

  bool operator==(const ProgressMessage&) const = default;
};

struct IconRequest {
  std::wstring path;
  bool byTypeOnly;

  bool operator==(const IconRequest&) const = default;
};

/// The registered user interface from construction to destruction. A dialog
/// or message box for which no answer is left fails the test.
class FakeHost : public platform::UserInterface {
 public:
  FakeHost();
  ~FakeHost() override;
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  /// Makes an unpacker report to this host's two windows.
  template <class U>
  void Attach(U& unpacker) {
    unpacker.SetHandleDialogProgress(progress);
    unpacker.SetWndFileTree(&fileTree);
  }

  /// The user asks for a stop, in the progress window or a button inside it.
  void PostStop() const;
  void PostStopFromButton() const;

  bool RunDialog(CDialog& dialog) override;
  int ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) override;
  void RunPendingEvents() override;
  HICON FindIcon(const std::wstring& path, bool byTypeOnly) override;

  // The script.
  /// A dialog takes answers until it has ended.
  std::deque<DialogAnswer> dialogAnswers;
  /// Ids of the buttons that are chosen.
  std::deque<int> messageBoxAnswers;
  std::function<void()> onPendingEvents;
  /// Called for each message of the progress window, after it was recorded.
  std::function<void()> onProgress;

  // The record.
  std::vector<ShownDialog> dialogs;
  std::vector<ShownMessageBox> messageBoxes;
  std::vector<ProgressMessage> progressMessages;
  /// What the file-tree window was told, in order.
  std::vector<std::wstring> fileTreePaths;
  std::vector<IconRequest> iconRequests;

  // The windows.
  CWnd mainWindow;
  HWND progress;
  HWND stopButton;
  CWnd fileTree;
};

}  // namespace testsupport
