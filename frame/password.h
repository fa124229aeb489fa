// The modal dialog "Enter Password".
#pragma once

#include <string>

#include "morvunp/messages.h"

namespace morvunp::frame {

/// Asks for one line of masked text. One object serves one question; what
/// becomes of the text is the caller's affair.
class CPassword : public CDialog {
 public:
  static constexpr INT_PTR kOk = 1;
  static constexpr INT_PTR kCancel = 0;

  CPassword() : CDialog(morvunp::kPasswordDialog) {}

  /// What was typed when OK was pressed; it may be empty.
  std::wstring m_strPassword;

 protected:
  BOOL OnInitDialog() override;
  BOOL OnHelpInfo(HELPINFO*) override { return TRUE; }
  void OnOK() override;
  void OnCancel() override { EndDialog(kCancel); }
};

}  // namespace morvunp::frame
