#include "support/fakehost.h"
#include "support/rooms.h"

#include <gtest/gtest.h>

#include "morvunp/messages.h"
#include "morvunp/platform/text.h"

namespace testsupport {
namespace {

std::wstring TextOf(LPARAM lParam) {
  const auto* text = reinterpret_cast<const wchar_t*>(lParam);
  return text == nullptr ? std::wstring() : std::wstring(text);
}

ShownDialog RecordOf(const CDialog& dialog) {
  ShownDialog shown{dialog.Template().id, {}};
  for (const platform::ControlTemplate& control : dialog.Template().controls) {
    if (control.id != 0) shown.texts[control.id] = dialog.ControlText(control.id);
  }
  return shown;
}

}  // namespace

FakeHost::FakeHost() {
  mainWindow.m_hWnd = platform::MakeWindow(nullptr, nullptr);
  progress =
      platform::MakeWindow(mainWindow.m_hWnd, [this](UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_UNPACK_PROGRESS) return LRESULT{0};
        progressMessages.push_back({wParam, TextOf(lParam)});
        if (onProgress) onProgress();
        return LRESULT{0};
      });
  stopButton = platform::MakeWindow(progress, nullptr);
  fileTree.m_hWnd =
      platform::MakeWindow(mainWindow.m_hWnd, [this](UINT message, WPARAM, LPARAM lParam) {
        if (message != WM_UNPACK_FILETREE) return LRESULT{0};
        fileTreePaths.push_back(TextOf(lParam));
        return LRESULT{0};
      });
  platform::SetMainWindow(&mainWindow);
  platform::RegisterUserInterface(this);
}

FakeHost::~FakeHost() {
  platform::RegisterUserInterface(nullptr);
  platform::SetMainWindow(nullptr);
  DestroyWindow(mainWindow.m_hWnd);
  // The queue belongs to the thread: what is left in it would reach the next
  // test.
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
  }
}

void FakeHost::PostStop() const { PostMessageW(progress, WM_UNPACK_STOP, 0, 0); }

void FakeHost::PostStopFromButton() const { PostMessageW(stopButton, WM_UNPACK_STOP, 0, 0); }

bool FakeHost::RunDialog(CDialog& dialog) {
  dialogs.push_back(RecordOf(dialog));
  while (!dialog.Ended()) {
    if (dialogAnswers.empty()) {
      ADD_FAILURE() << "no answer left for dialog " << dialog.Template().id;
      return false;
    }
    const DialogAnswer answer = dialogAnswers.front();
    dialogAnswers.pop_front();
    for (const auto& [id, text] : answer.typed) dialog.SetControlText(id, text);
    switch (answer.kind) {
      case DialogAnswer::Kind::kPress:
        dialog.Press(answer.button);
        break;
      case DialogAnswer::Kind::kEscape:
        dialog.PressEscape();
        break;
      case DialogAnswer::Kind::kCannotRun:
        return false;
    }
  }
  return true;
}

int FakeHost::ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) {
  messageBoxes.push_back({text, caption, type});
  if (messageBoxAnswers.empty()) {
    ADD_FAILURE() << "no answer left for message box: " << platform::ToNativeText(text);
    return IDNO;
  }
  const int answer = messageBoxAnswers.front();
  messageBoxAnswers.pop_front();
  return answer;
}

void FakeHost::RunPendingEvents() {
  if (onPendingEvents) onPendingEvents();
}

HICON FakeHost::FindIcon(const std::wstring& path, bool byTypeOnly) {
  iconRequests.push_back({path, byTypeOnly});
  return nullptr;
}

}  // namespace testsupport
