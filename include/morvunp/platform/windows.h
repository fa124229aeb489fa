// Windows, messages and the thread's message queue.
//
// A window is a small object in a table: a handle, a parent, a procedure.
// A window belongs to the thread that made it, as a queue does: on another
// thread there is no window of that handle.
#pragma once

#include <functional>

#include "morvunp/platform/types.h"

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT STM_SETICON = 0x0170;
inline constexpr UINT PM_REMOVE = 1;

inline constexpr UINT MB_YESNO = 0x04;
inline constexpr UINT MB_ICONHAND = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

inline constexpr UINT SHGFI_USEFILEATTRIBUTES = 0x10;
inline constexpr UINT SHGFI_ICON = 0x100;

struct MSG {
  HWND hwnd = nullptr;
  UINT message = WM_NULL;
  WPARAM wParam = 0;
  LPARAM lParam = 0;
};

struct SHFILEINFOW {
  HICON hIcon = nullptr;
};

/// Calls the window's procedure at once and returns its result; 0 when the
/// window does not exist.
MORVUNP_API LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Appends to the thread's queue. FALSE when the window does not exist.
MORVUNP_API BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Lets the user interface run its pending events, then takes the next message
/// of the queue. Only "any window, any message, remove" is supported.
MORVUNP_API BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove);
/// Takes a message that is addressed to `dialog` or one of its children,
/// handing it to its window; FALSE, untouched, for any other.
MORVUNP_API BOOL IsDialogMessageW(HWND dialog, MSG* message);
MORVUNP_API LRESULT DispatchMessageW(const MSG* message);
MORVUNP_API BOOL IsWindow(HWND window);
MORVUNP_API BOOL IsChild(HWND parent, HWND window);
/// Destroys the window and its children.
MORVUNP_API BOOL DestroyWindow(HWND window);

/// Shows a message box through the registered user interface; IDNO when there
/// is none.
MORVUNP_API int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
/// The icon of a file (SHGFI_ICON) or of a file type by its extension
/// (SHGFI_ICON | SHGFI_USEFILEATTRIBUTES). 0 when there is none.
MORVUNP_API std::uintptr_t SHGetFileInfoW(LPCWSTR path, DWORD attributes, SHFILEINFOW* info,
                                          UINT size, UINT flags);

namespace morvunp::platform {
using WindowProcedure = std::function<LRESULT(UINT message, WPARAM, LPARAM)>;

/// Makes a window; the procedure gets every message sent or dispatched to it.
MORVUNP_API HWND MakeWindow(HWND parent, WindowProcedure procedure);
}  // namespace morvunp::platform
