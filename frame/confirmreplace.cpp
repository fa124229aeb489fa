#include "frame/confirmreplace.h"

namespace morvunp::frame {

BOOL CConfirmReplace::OnInitDialog() {
  CDialog::OnInitDialog();
  SetDlgItemTextW(morvunp::kReplaceMessage, m_strMessage.c_str());
  SetDlgItemTextW(morvunp::kReplaceName, m_strFileName.c_str());
  SetIcon(morvunp::kReplaceOldIcon, m_strPath, SHGFI_ICON);
  SetDlgItemTextW(morvunp::kReplaceOldSize, m_strOldSize.c_str());
  SetDlgItemTextW(morvunp::kReplaceOldModified, m_strOldModified.c_str());
  const std::size_t dot = m_strPath.rfind(L'.');
  SetIcon(morvunp::kReplaceNewIcon,
          dot != std::wstring::npos ? m_strPath.substr(dot) : std::wstring(),
          SHGFI_ICON | SHGFI_USEFILEATTRIBUTES);
  SetDlgItemTextW(morvunp::kReplaceNewSize, m_strNewSize.c_str());
  SetDlgItemTextW(morvunp::kReplaceNewModified, m_strNewModified.c_str());
  return TRUE;
}

BOOL CConfirmReplace::OnCommand(WPARAM wParam, LPARAM lParam) {
  struct Button {
    UINT id;
    INT_PTR result;
  };
  constexpr Button kButtons[] = {{morvunp::kReplaceYes, kYes},
                                 {morvunp::kReplaceYesToAll, kYesToAll},
                                 {morvunp::kReplaceNo, kNo},
                                 {morvunp::kReplaceCancel, kCancel}};
  for (const Button& button : kButtons) {
    if ((wParam & 0xFFFF) != button.id) continue;
    EndDialog(static_cast<int>(button.result));
    return TRUE;
  }
  return CDialog::OnCommand(wParam, lParam);
}

void CConfirmReplace::SetIcon(int control, const std::wstring& path, UINT flags) {
  SHFILEINFOW info;
  SHGetFileInfoW(path.c_str(), 0, &info, sizeof info, flags);
  SendDlgItemMessageW(control, STM_SETICON, reinterpret_cast<WPARAM>(info.hIcon), 0);
}

}  // namespace morvunp::frame
