// What a host implements so that the library's dialogs, message boxes and
// icons appear in its own style.
#pragma once

#include <string>

#include "morvunp/platform/framework.h"
#include "morvunp/platform/types.h"

namespace morvunp::platform {

class MORVUNP_API UserInterface {
 public:
  virtual ~UserInterface() = default;

  /// Shows the dialog until it has ended. False when it cannot be shown.
  /// Returning true without having ended it counts as cancelling it.
  virtual bool RunDialog(CDialog& dialog) = 0;
  /// `type` holds MB_ values. The id of the chosen button (IDYES, ...).
  virtual int ShowMessageBox(const std::wstring& text, const std::wstring& caption, UINT type) = 0;
  /// Called each time the library pumps messages; must not block.
  virtual void RunPendingEvents() = 0;
  /// The icon of the file at `path`, or of its type only when `byTypeOnly`.
  /// Null when there is none.
  virtual HICON FindIcon(const std::wstring& path, bool byTypeOnly) = 0;
};

/// Registers the user interface of this thread, where all calls of it come;
/// null removes it. Not owned: it must outlive every library call that the
/// thread makes while it is registered.
MORVUNP_API void RegisterUserInterface(UserInterface* userInterface);
MORVUNP_API UserInterface* RegisteredUserInterface();

/// Sets what AfxGetMainWnd returns on this thread. Not owned.
MORVUNP_API void SetMainWindow(CWnd* window);

}  // namespace morvunp::platform
