// Which characters of a stranger's text are not to be shown as they are.
//
// Control characters could drive a terminal or break a line, and directional
// overrides could make a name read as another one.
#pragma once

#include <cstdint>
#include <string>

namespace host {

/// Characters that change the direction or the line of what follows them.
constexpr bool IsLayoutControl(wchar_t c) {
  return c == 0x061c || (c >= 0x200e && c <= 0x200f) || (c >= 0x2028 && c <= 0x202e) ||
         (c >= 0x2066 && c <= 0x2069) || (c >= 0xe0000 && c <= 0xe007f);
}

/// UTF-8 can express it.
constexpr bool IsEncodable(wchar_t c) {
  const bool isSurrogate = c >= 0xd800 && c <= 0xdfff;
  return static_cast<std::uint32_t>(c) <= 0x10ffff && !isSurrogate;
}

constexpr bool NeedsEscape(wchar_t c) {
  return c < 0x20 || (c >= 0x7f && c <= 0x9f) || IsLayoutControl(c) || !IsEncodable(c);
}

/// What is shown in place of a character: \x1b, \u202e; a byte of a file name
/// that is no character (U+DC00 + byte) by its value.
std::string EscapeOf(wchar_t c);

}  // namespace host
