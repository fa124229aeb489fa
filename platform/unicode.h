// What UTF-16 and UTF-8 make of a code point.
#pragma once

#include <cstdint>
#include <string>

namespace morvunp::platform {

inline constexpr wchar_t kFirstHighSurrogate = 0xD800;
inline constexpr wchar_t kFirstLowSurrogate = 0xDC00;
inline constexpr wchar_t kFirstOfTwoUnits = 0x10000;

constexpr bool IsHighSurrogate(wchar_t unit) { return (unit & ~0x3FF) == kFirstHighSurrogate; }
constexpr bool IsLowSurrogate(wchar_t unit) { return (unit & ~0x3FF) == kFirstLowSurrogate; }

constexpr wchar_t JoinSurrogates(wchar_t high, wchar_t low) {
  return kFirstOfTwoUnits + ((high - kFirstHighSurrogate) << 10) + (low - kFirstLowSurrogate);
}

/// The halves of a character from kFirstOfTwoUnits on.
constexpr wchar_t HighSurrogateOf(wchar_t character) {
  return kFirstHighSurrogate + ((character - kFirstOfTwoUnits) >> 10);
}
constexpr wchar_t LowSurrogateOf(wchar_t character) {
  return kFirstLowSurrogate + (character & 0x3FF);
}

/// Also takes code points that are no characters, such as single surrogates.
inline void AppendUtf8(std::string& out, wchar_t codePoint) {
  const auto c = static_cast<std::uint32_t>(codePoint);
  const auto put = [&](std::uint32_t byte) { out += static_cast<char>(byte); };
  const auto putTail = [&](int shift) { put(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6));
    putTail(0);
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12));
    putTail(6);
    putTail(0);
  } else {
    put(0xF0 | ((c >> 18) & 0x07));
    putTail(12);
    putTail(6);
    putTail(0);
  }
}

}  // namespace morvunp::platform
