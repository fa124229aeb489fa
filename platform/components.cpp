#include "morvunp/platform/components.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/unicode.h"

namespace platform = morvunp::platform;

namespace {

constexpr std::size_t kPrefix = sizeof(DWORD);

std::wstring UnitsOf(std::wstring_view text) {
  std::wstring units;
  units.reserve(text.size());
  for (const wchar_t c : text) {
    if (c < platform::kFirstOfTwoUnits) {
      units += c;
    } else {
      units += platform::HighSurrogateOf(c);
      units += platform::LowSurrogateOf(c);
    }
  }
  return units;
}

void JoinUnits(std::wstring& text) {
  std::size_t length = 0;
  for (const wchar_t unit : text) {
    if (platform::IsLowSurrogate(unit) && length > 0 &&
        platform::IsHighSurrogate(text[length - 1])) {
      text[length - 1] = platform::JoinSurrogates(text[length - 1], unit);
    } else {
      text[length++] = unit;
    }
  }
  text.resize(length);
}

}  // namespace

BSTR SysAllocString(LPCWSTR text) {
  if (text == nullptr) return nullptr;
  const std::wstring units = UnitsOf(text);
  const std::size_t bytes = units.size() * sizeof(wchar_t);
  if (bytes > 0xFFFFFFF0) return nullptr;
  auto* const memory = static_cast<BYTE*>(std::malloc(kPrefix + bytes + sizeof(wchar_t)));
  if (memory == nullptr) return nullptr;
  const auto length = static_cast<DWORD>(bytes);
  std::memcpy(memory, &length, kPrefix);
  std::memcpy(memory + kPrefix, units.c_str(), bytes + sizeof(wchar_t));
  return reinterpret_cast<BSTR>(memory + kPrefix);
}

void SysFreeString(BSTR string) {
  if (string != nullptr) std::free(reinterpret_cast<BYTE*>(string) - kPrefix);
}

HRESULT VariantClear(PROPVARIANT* value) {
  if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
  *value = {};
  return S_OK;
}

// NOLINTNEXTLINE(readability-non-const-parameter): such strings have no other type
void platform::GetTextOfString(BSTR string, std::wstring& text) {
  text.assign(string != nullptr ? string : L"");
  const auto firstLow = std::find_if(text.begin(), text.end(), IsLowSurrogate);
  if (firstLow != text.end()) JoinUnits(text);
}

HRESULT platform::ResultOfError(DWORD error) {
  if (error == 0) return E_FAIL;
  if ((error & 0x80000000) != 0) return static_cast<HRESULT>(error);
  return static_cast<HRESULT>(0x80070000 | (error & 0xFFFF));
}
