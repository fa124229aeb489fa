#include "morvunp/platform/userinterface.h"

namespace platform = morvunp::platform;

namespace {

thread_local platform::UserInterface* registered = nullptr;
thread_local CWnd* mainWindow = nullptr;

}  // namespace

void platform::RegisterUserInterface(UserInterface* userInterface) { registered = userInterface; }

platform::UserInterface* platform::RegisteredUserInterface() { return registered; }

void platform::SetMainWindow(CWnd* window) { mainWindow = window; }

CWnd* AfxGetMainWnd() { return mainWindow; }

int MessageBoxW(HWND, LPCWSTR text, LPCWSTR caption, UINT type) {
  return registered != nullptr ? registered->ShowMessageBox(text, caption, type) : IDNO;
}

std::uintptr_t SHGetFileInfoW(LPCWSTR path, DWORD, SHFILEINFOW* info, UINT, UINT flags) {
  const bool byTypeOnly = (flags & SHGFI_USEFILEATTRIBUTES) != 0;
  info->hIcon = registered != nullptr ? registered->FindIcon(path, byTypeOnly) : nullptr;
  return info->hIcon != nullptr ? 1 : 0;
}
