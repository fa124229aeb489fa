#include "morvunp/platform/framework.h"

#include "morvunp/platform/userinterface.h"

namespace platform = morvunp::platform;

CInvalidArgException::CInvalidArgException()
    : std::invalid_argument("an index outside its list was used") {}

void AfxThrowInvalidArgException() { throw CInvalidArgException(); }

CAtlException::CAtlException(HRESULT result)
    : std::runtime_error("a date cannot be converted"), m_hr(result) {}

void AtlThrow(HRESULT result) { throw CAtlException(result); }

CDialog::CDialog(UINT templateId, CWnd*) : m_pTemplate(platform::FindDialogTemplate(templateId)) {}

INT_PTR CDialog::DoModal() {
  auto* const userInterface = platform::RegisteredUserInterface();
  if (m_pTemplate == nullptr || userInterface == nullptr) return -1;
  m_bEnded = false;
  m_nResult = -1;
  OnInitDialog();
  if (!m_bEnded && !userInterface->RunDialog(*this)) return -1;
  if (!m_bEnded) OnCancel();
  return m_nResult;
}

std::wstring CDialog::ControlText(UINT id) const {
  const auto found = m_texts.find(id);
  return found != m_texts.end() ? found->second : std::wstring();
}

HICON CDialog::ControlIcon(UINT id) const {
  const auto found = m_icons.find(id);
  return found != m_icons.end() ? found->second : nullptr;
}

void CDialog::SetControlText(UINT id, const std::wstring& text) { m_texts[id] = text; }

void CDialog::Press(UINT id) {
  if (OnCommand(id, 0) == TRUE) return;
  if (id == IDOK) OnOK();
  if (id == IDCANCEL) OnCancel();
}

BOOL CDialog::OnCommand(WPARAM, LPARAM) { return FALSE; }

void CDialog::EndDialog(int result) {
  m_nResult = result;
  m_bEnded = true;
}

BOOL CDialog::SetDlgItemTextW(int id, LPCWSTR text) {
  SetControlText(static_cast<UINT>(id), text);
  return TRUE;
}

LRESULT CDialog::SendDlgItemMessageW(int id, UINT message, WPARAM wParam, LPARAM) {
  if (message == STM_SETICON) m_icons[static_cast<UINT>(id)] = reinterpret_cast<HICON>(wParam);
  return 0;
}
