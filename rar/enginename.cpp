#include "rar/enginename.h"

#include "frame/itempath.h"

namespace rar {
namespace {

// The library's escapes; see platform::ToLibraryPath.
constexpr wchar_t kByteBase = 0xDC00;
constexpr wchar_t kEscapedBackslash = kByteBase + L'\\';

// Bytes that are no text reach the engine's callers as private characters,
// behind a mark that tells them from such characters in their own right.
constexpr wchar_t kEngineByteMark = 0xFFFE;
constexpr wchar_t kEngineByteBase = 0xE000;

// Older archives hold UTF-16, which the engine hands on unit by unit.
bool IsHighSurrogate(wchar_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(wchar_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

wchar_t JoinSurrogates(wchar_t high, wchar_t low) {
  return static_cast<wchar_t>(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
}

bool IsByte(wchar_t c, wchar_t base) { return c >= base + 0x80 && c <= base + 0xFF; }

}  // namespace

std::wstring FromEngineName(std::wstring_view name) {
  const bool hasBytes = name.find(kEngineByteMark) != name.npos;
  std::wstring path;
  path.reserve(name.size());
  for (std::size_t i = 0; i < name.size(); ++i) {
    const wchar_t c = name[i];
    if (c == L'/') {
      path += frame::kSeparator;
    } else if (IsHighSurrogate(c) && i + 1 < name.size() && IsLowSurrogate(name[i + 1])) {
      path += JoinSurrogates(c, name[++i]);
    } else if (c == L'\\') {
      path += kEscapedBackslash;
    } else if (hasBytes && IsByte(c, kEngineByteBase)) {
      path += static_cast<wchar_t>(c - kEngineByteBase + kByteBase);
    } else if (c != kEngineByteMark) {
      path += c;
    }
  }
  return path;
}

std::wstring ToEngineName(std::wstring_view path) {
  bool isMarked = false;
  std::wstring name;
  name.reserve(path.size() + 1);
  for (const wchar_t c : path) {
    if (c == frame::kSeparator) {
      name += L'/';
    } else if (c == kEscapedBackslash) {
      name += L'\\';
    } else if (IsByte(c, kByteBase)) {
      if (!isMarked) name += kEngineByteMark;
      isMarked = true;
      name += static_cast<wchar_t>(c - kByteBase + kEngineByteBase);
    } else {
      name += c;
    }
  }
  return name;
}

}  // namespace rar
