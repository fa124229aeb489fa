// A property value that was received.
#pragma once

#include <string>

#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// Owns the value. Numbers are taken as they lie there; an empty value is 0.
class Property {
 public:
  Property() = default;
  ~Property() { VariantClear(&m_value); }
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;

  /// Where a function puts the value.
  PROPVARIANT* Receive() {
    VariantClear(&m_value);
    return &m_value;
  }

  VARTYPE Type() const { return m_value.vt; }
  bool IsEmpty() const { return m_value.vt == VT_EMPTY; }
  ULONGLONG Number64() const { return IsEmpty() ? 0 : m_value.uhVal; }
  DWORD Number32() const { return IsEmpty() ? 0 : m_value.ulVal; }
  bool IsTrue() const { return m_value.vt == VT_BOOL && m_value.boolVal != VARIANT_FALSE; }
  FILETIME Time() const { return m_value.filetime; }
  /// Empty for a value that is no text.
  void GetText(std::wstring& text) const {
    platform::GetTextOfString(m_value.vt == VT_BSTR ? m_value.bstrVal : nullptr, text);
  }
  std::wstring Text() const {
    std::wstring text;
    GetText(text);
    return text;
  }

 private:
  PROPVARIANT m_value;
};

// Answers to those who ask for a property; `value` is empty before.
inline void Put(PROPVARIANT* value, DWORD number) {
  value->vt = VT_UI4;
  value->ulVal = number;
}
inline void Put(PROPVARIANT* value, ULONGLONG number) {
  value->vt = VT_UI8;
  value->uhVal = number;
}
inline void Put(PROPVARIANT* value, FILETIME time) {
  value->vt = VT_FILETIME;
  value->filetime = time;
}
inline void PutBool(PROPVARIANT* value, bool truth) {
  value->vt = VT_BOOL;
  value->boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
}
inline void Put(PROPVARIANT* value, const std::wstring& text) {
  value->bstrVal = SysAllocString(text.c_str());
  if (value->bstrVal != nullptr) value->vt = VT_BSTR;
}

}  // namespace morvunp::sevenzip
