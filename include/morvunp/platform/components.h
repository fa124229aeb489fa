// Component objects: interface ids, result codes, property values and their
// strings.
//
// A BSTR holds UTF-16 code units, one to a wchar_t, as the engines that speak
// through such objects expect it; wide text of this library holds whole
// characters. SysAllocString and platform::TextOfString are where the two meet.
#pragma once

#include <string>
#include <string_view>

#include "morvunp/platform/times.h"
#include "morvunp/platform/types.h"

using ULONG = std::uint32_t;
using VARTYPE = WORD;
using VARIANT_BOOL = std::int16_t;
using PROPID = DWORD;
/// Owned by whoever holds it; four bytes before it tell its length in bytes.
using BSTR = wchar_t*;

inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);

/// A 16-byte id, as it is written: {Data1-Data2-Data3-Data4}.
struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];

  bool operator==(const GUID&) const = default;
};
static_assert(sizeof(GUID) == 16);

/// Objects are counted and destroy themselves with their last reference. The
/// order of the functions is the interface: an engine calls them by position.
struct IUnknown {
  /// The interface's id. Every interface that is asked for by id has its own.
  static constexpr GUID kId{0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

  virtual HRESULT QueryInterface(const GUID& id, void** object) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_UI1 = 17;
inline constexpr VARTYPE VT_UI2 = 18;
inline constexpr VARTYPE VT_UI4 = 19;
inline constexpr VARTYPE VT_UI8 = 21;
inline constexpr VARTYPE VT_FILETIME = 64;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// A typed value. Only a string owns memory; VariantClear frees it.
struct PROPVARIANT {
  // The largest member stands for the others.
  // NOLINTBEGIN(cppcoreguidelines-pro-type-member-init)
  PROPVARIANT() : uhVal(0) {}

  VARTYPE vt = VT_EMPTY;
  WORD wReserved1 = 0;
  WORD wReserved2 = 0;
  WORD wReserved3 = 0;
  union {
    BYTE bVal;
    WORD uiVal;
    DWORD ulVal;
    ULONGLONG uhVal;
    VARIANT_BOOL boolVal;
    FILETIME filetime;
    BSTR bstrVal;
  };
  // NOLINTEND(cppcoreguidelines-pro-type-member-init)
};
static_assert(sizeof(PROPVARIANT) == 16);

/// A copy of a zero-terminated text; null when there is no memory.
MORVUNP_API BSTR SysAllocString(LPCWSTR text);
MORVUNP_API void SysFreeString(BSTR string);
/// Frees what the value owns and makes it empty.
MORVUNP_API HRESULT VariantClear(PROPVARIANT* value);

namespace morvunp::platform {
/// The text of a string up to its first zero; empty for null. `text` keeps its
/// memory from one call to the next.
MORVUNP_API void GetTextOfString(BSTR string, std::wstring& text);
/// Result code of a GetLastError value: 0 gives E_FAIL.
MORVUNP_API HRESULT ResultOfError(DWORD error);
}  // namespace morvunp::platform
