// Text conversion, and the two forms of a path.
//
// A wide string holds one code point per character. "The ANSI code page" is
// the locale's codeset unless a host sets another one for the thread or for the
// object at work.
#pragma once

#include <string>
#include <string_view>

#include "morvunp/platform/types.h"

inline constexpr UINT CP_ACP = 0;
/// The codeset of the locale, whatever code page a host has set for CP_ACP:
/// the one in which other libraries of this process read narrow texts.
inline constexpr UINT CP_THREAD_ACP = 3;

/// Decodes `length` bytes in one of the two code pages above. Bytes that are
/// not valid in it make the whole text be decoded in the Windows code page of
/// the locale's language; bytes undefined there too become the private
/// characters U+F780 to U+F7FF, so that no two texts collide. Never fails. With
/// `capacity` 0 only the needed number of characters is returned.
MORVUNP_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* bytes, int length,
                                    wchar_t* wide, int capacity);
/// Encodes `length` characters in one of the two code pages above; a character
/// that it lacks becomes `defaultChar`, '?' when that is null. With `capacity` 0
/// only the needed number of bytes is returned.
MORVUNP_API int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int length,
                                    char* bytes, int capacity, const char* defaultChar,
                                    BOOL* usedDefault);

/// Compares ignoring case, in the locale. Below, equal or above 0.
MORVUNP_API int _wcsicmp(LPCWSTR left, LPCWSTR right);
/// Turns a text to upper case in place, by the locale, and returns it.
MORVUNP_API wchar_t* CharUpperW(wchar_t* text);

namespace morvunp::platform {

/// Makes `name` (an iconv name such as "CP932") the ANSI code page of this
/// thread; an empty name goes back to the locale's codeset. False when the
/// system does not know it or it is not a superset of ASCII.
MORVUNP_API bool SetAnsiCodePage(const std::string& name);

/// In the library's form of a path, a byte that is not valid in the locale's
/// codeset is this plus the byte, and so is a backslash that is part of a name.
inline constexpr wchar_t kEscapedByteBase = 0xDC00;
inline constexpr wchar_t kEscapedBackslash = kEscapedByteBase + L'\\';

/// A path of this system in the library's form: `/home/ann` becomes
/// `\home\ann`.
MORVUNP_API std::wstring ToLibraryPath(std::string_view native);
/// The inverse: the bytes that a system call gets.
MORVUNP_API std::string ToNativePath(std::wstring_view path);

/// UTF-8 or the locale's codeset made readable on this system's terminals.
MORVUNP_API std::string ToNativeText(std::wstring_view text);

}  // namespace morvunp::platform
