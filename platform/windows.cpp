#include "morvunp/platform/windows.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <map>
#include <vector>

#include "morvunp/platform/userinterface.h"

namespace platform = morvunp::platform;

namespace {

struct Window {
  HWND parent;
  platform::WindowProcedure procedure;
};

// Each thread has its own; a window of another thread is none here.
thread_local std::map<HWND, Window> windows;
thread_local std::deque<MSG> queue;

LRESULT Deliver(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto found = windows.find(window);
  if (found == windows.end()) return 0;
  // A copy, because the procedure may destroy its own window.
  const platform::WindowProcedure procedure = found->second.procedure;
  return procedure ? procedure(message, wParam, lParam) : 0;
}

}  // namespace

HWND platform::MakeWindow(HWND parent, WindowProcedure procedure) {
  // The process's, so that no thread takes a handle of another for its own.
  static std::atomic<std::uintptr_t> lastHandle = 0;
  const auto window = reinterpret_cast<HWND>(++lastHandle);
  windows.emplace(window, Window{parent, std::move(procedure)});
  return window;
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return Deliver(window, message, wParam, lParam);
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (IsWindow(window) == FALSE) return FALSE;
  queue.push_back({window, message, wParam, lParam});
  return TRUE;
}

BOOL PeekMessageW(MSG* message, HWND, UINT, UINT, UINT) {
  if (auto* const userInterface = platform::RegisteredUserInterface()) {
    userInterface->RunPendingEvents();
  }
  if (queue.empty()) return FALSE;
  *message = queue.front();
  queue.pop_front();
  return TRUE;
}

BOOL IsDialogMessageW(HWND dialog, MSG* message) {
  if (dialog == nullptr || IsWindow(dialog) == FALSE) return FALSE;
  if (message->hwnd != dialog && IsChild(dialog, message->hwnd) == FALSE) return FALSE;
  DispatchMessageW(message);
  return TRUE;
}

LRESULT DispatchMessageW(const MSG* message) {
  return Deliver(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL IsWindow(HWND window) { return windows.contains(window) ? TRUE : FALSE; }

BOOL IsChild(HWND parent, HWND window) {
  for (auto found = windows.find(window); found != windows.end();
       found = windows.find(found->second.parent)) {
    if (found->second.parent == parent) return TRUE;
  }
  return FALSE;
}

BOOL DestroyWindow(HWND window) {
  if (IsWindow(window) == FALSE) return FALSE;
  std::vector<HWND> doomed{window};
  for (const auto& [handle, object] : windows) {
    if (IsChild(window, handle) == TRUE) doomed.push_back(handle);
  }
  for (const HWND handle : doomed) windows.erase(handle);
  std::erase_if(queue, [](const MSG& message) { return IsWindow(message.hwnd) == FALSE; });
  return TRUE;
}
