#include "frame/password.h"

namespace morvunp::frame {

BOOL CPassword::OnInitDialog() {
  CDialog::OnInitDialog();
  SetDlgItemTextW(morvunp::kPasswordEdit, L"");
  return TRUE;
}

void CPassword::OnOK() {
  m_strPassword = GetDlgItemTextW(morvunp::kPasswordEdit);
  EndDialog(kOk);
}

}  // namespace morvunp::frame
