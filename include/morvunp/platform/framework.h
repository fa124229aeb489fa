// The part of the host's application framework that the library uses: the
// root object, windows, modal dialogs and the framework's two errors.
#pragma once

#include <map>
#include <stdexcept>

#include "morvunp/platform/dialogtemplate.h"
#include "morvunp/platform/types.h"
#include "morvunp/platform/windows.h"

class MORVUNP_API CObject {
 public:
  virtual ~CObject() = default;
};

/// A host's window object: a handle and no more.
class MORVUNP_API CWnd : public CObject {
 public:
  HWND m_hWnd = nullptr;

  HWND GetSafeHwnd() const { return m_hWnd; }
};

/// The main window that owns message boxes and dialogs; null when the host
/// has set none.
MORVUNP_API CWnd* AfxGetMainWnd();

/// The error of an out-of-range access to a list of the framework.
class MORVUNP_API CInvalidArgException : public std::invalid_argument {
 public:
  CInvalidArgException();
};
[[noreturn]] MORVUNP_API void AfxThrowInvalidArgException();

/// An error that carries a result code.
class MORVUNP_API CAtlException : public std::runtime_error {
 public:
  explicit CAtlException(HRESULT result);
  HRESULT m_hr;
};
[[noreturn]] MORVUNP_API void AtlThrow(HRESULT result);

struct HELPINFO;

/// A modal dialog built from a registered template (see dialogtemplate.h).
///
/// This layer keeps the dialog as a model: texts and icons by control id. The
/// registered user interface shows the model, sets what the user typed and
/// presses its buttons.
class MORVUNP_API CDialog : public CWnd {
 public:
  explicit CDialog(UINT templateId, CWnd* parent = nullptr);

  /// Runs the dialog until it ends; the result that it ended with, or -1 when
  /// it could not run (no such template, no user interface).
  virtual INT_PTR DoModal();

  // What a user interface uses.
  const morvunp::platform::DialogTemplate& Template() const { return *m_pTemplate; }
  std::wstring ControlText(UINT id) const;
  HICON ControlIcon(UINT id) const;
  void SetControlText(UINT id, const std::wstring& text);
  /// Presses a button. OK (1) and Cancel (2) go to OnOK and OnCancel unless
  /// the dialog handles them itself.
  void Press(UINT id);
  /// Escape, or the window was closed.
  void PressEscape() { OnCancel(); }
  /// The help key; a dialog that handles it shows no help of the framework's.
  bool PressHelp() { return OnHelpInfo(nullptr) == TRUE; }
  bool Ended() const { return m_bEnded; }

 protected:
  virtual BOOL OnInitDialog() { return TRUE; }
  /// A button was pressed: its id in the low half of `wParam`. TRUE: handled.
  virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
  virtual BOOL OnHelpInfo(HELPINFO*) { return FALSE; }
  virtual void OnOK() { EndDialog(IDOK); }
  virtual void OnCancel() { EndDialog(IDCANCEL); }

  void EndDialog(int result);
  BOOL SetDlgItemTextW(int id, LPCWSTR text);
  std::wstring GetDlgItemTextW(int id) const { return ControlText(static_cast<UINT>(id)); }
  LRESULT SendDlgItemMessageW(int id, UINT message, WPARAM wParam, LPARAM lParam);

 private:
  const morvunp::platform::DialogTemplate* m_pTemplate;
  std::map<UINT, std::wstring> m_texts;
  std::map<UINT, HICON> m_icons;
  bool m_bEnded = false;
  INT_PTR m_nResult = -1;
};
