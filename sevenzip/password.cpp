#include "sevenzip/password.h"

#include "frame/password.h"
#include "sevenzip/guarded.h"

namespace morvunp::sevenzip {

HRESULT Password::Get(BSTR* password) {
  *password = nullptr;
  return Guarded([&]() -> HRESULT {
    if (!m_bPasswordIsDefined) {
      frame::CPassword dialog;
      if (dialog.DoModal() != frame::CPassword::kOk) return E_ABORT;
      Set(dialog.m_strPassword);
    }
    *password = SysAllocString(m_strCryptoPassword.c_str());
    return *password != nullptr ? S_OK : E_OUTOFMEMORY;
  });
}

}  // namespace morvunp::sevenzip
