#include "platform/components.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kPrefix = sizeof(DWORD);

constexpr wchar_t kFirstHigh = 0xD800;
constexpr wchar_t kFirstLow = 0xDC00;
constexpr wchar_t kFirstAbove = 0x10000;

bool IsHigh(wchar_t unit) { return (unit & ~0x3FF) == kFirstHigh; }
bool IsLow(wchar_t unit) { return (unit & ~0x3FF) == kFirstLow; }

std::wstring UnitsOf(std::wstring_view text) {
  std::wstring units;
  units.reserve(text.size());
  for (const wchar_t c : text) {
    if (c < kFirstAbove) {
      units += c;
    } else {
      units += static_cast<wchar_t>(kFirstHigh + ((c - kFirstAbove) >> 10));
      units += static_cast<wchar_t>(kFirstLow + ((c - kFirstAbove) & 0x3FF));
    }
  }
  return units;
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

UINT SysStringLen(BSTR string) {
  if (string == nullptr) return 0;
  DWORD bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<const BYTE*>(string) - kPrefix, kPrefix);
  return bytes / sizeof(wchar_t);
}

HRESULT VariantClear(PROPVARIANT* value) {
  if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
  *value = {};
  return S_OK;
}

std::wstring platform::TextOfString(BSTR string) {
  std::wstring text;
  if (string == nullptr) return text;
  for (const wchar_t* unit = string; *unit != 0; ++unit) {
    if (IsLow(*unit) && !text.empty() && IsHigh(text.back())) {
      text.back() = kFirstAbove + ((text.back() - kFirstHigh) << 10) + (*unit - kFirstLow);
    } else {
      text += *unit;
    }
  }
  return text;
}

HRESULT platform::ResultOfError(DWORD error) {
  if (error == 0) return E_FAIL;
  if ((error & 0x80000000) != 0) return static_cast<HRESULT>(error);
  return static_cast<HRESULT>(0x80070000 | (error & 0xFFFF));
}
