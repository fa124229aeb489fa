// The password of one open or one extraction.
#pragma once

#include <string>

#include "morvunp/platform/platform.h"

namespace morvunp::sevenzip {

/// Asks once and remembers the answer; a prompt that was cancelled comes again.
class Password {
 public:
  /// Answers the engine: S_OK with a string that the caller frees, E_ABORT when
  /// the prompt was cancelled, E_OUTOFMEMORY.
  HRESULT Get(BSTR* password);

  bool IsDefined() const { return m_bPasswordIsDefined; }
  const std::wstring& Text() const { return m_strCryptoPassword; }
  void Set(const std::wstring& password) {
    m_strCryptoPassword = password;
    m_bPasswordIsDefined = true;
  }

 private:
  bool m_bPasswordIsDefined = false;
  std::wstring m_strCryptoPassword;
};

}  // namespace morvunp::sevenzip
