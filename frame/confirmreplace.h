// The modal dialog "Confirm File Replace".
#pragma once

#include <string>

#include "morvunp/messages.h"

namespace morvunp::frame {

/// Shows an existing file beside the one that would replace it. The caller
/// fills the texts, then runs the dialog; the result is one of the constants.
class CConfirmReplace : public CDialog {
 public:
  static constexpr INT_PTR kYes = 1;
  static constexpr INT_PTR kYesToAll = 2;
  static constexpr INT_PTR kNo = 3;
  static constexpr INT_PTR kCancel = 4;

  CConfirmReplace() : CDialog(morvunp::kReplaceDialog) {}

  /// The name in single quotes, followed by a full stop.
  std::wstring m_strFileName;
  /// Full path of the existing file.
  std::wstring m_strPath;
  std::wstring m_strMessage;
  std::wstring m_strOldModified;
  std::wstring m_strOldSize;
  std::wstring m_strNewModified;
  std::wstring m_strNewSize;

 protected:
  BOOL OnInitDialog() override;
  BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
  BOOL OnHelpInfo(HELPINFO*) override { return TRUE; }
  void OnCancel() override { EndDialog(kCancel); }

 private:
  void SetIcon(int control, const std::wstring& path, UINT flags);
};

}  // namespace morvunp::frame
