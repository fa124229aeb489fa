#include "frame/password.h"

#include "frame/dialogids.h"

namespace frame {

BOOL CPassword::OnInitDialog() {
  CDialog::OnInitDialog();
  SetDlgItemTextW(kIdPasswordEdit, L"");
  return TRUE;
}

void CPassword::OnOK() {
  m_strPassword = GetDlgItemTextW(kIdPasswordEdit);
  EndDialog(kOk);
}

}  // namespace frame
