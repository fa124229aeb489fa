#include "rar/enginename.h"

#include "frame/itempath.h"
#include "morvunp/platform/text.h"
#include "platform/unicode.h"

namespace morvunp::rar {
namespace {

using platform::kEscapedBackslash;
using platform::kEscapedByteBase;

// Bytes that are no text reach the engine's callers as private characters,
// behind a mark that tells them from such characters in their own right.
constexpr wchar_t kEngineByteMark = 0xFFFE;
constexpr wchar_t kEngineByteBase = 0xE000;

/// Older archives hold UTF-16, which the engine hands on unit by unit.
bool IsPairAt(std::wstring_view name, std::size_t i) {
  return platform::IsHighSurrogate(name[i]) && i + 1 < name.size() &&
         platform::IsLowSurrogate(name[i + 1]);
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
    } else if (IsPairAt(name, i)) {
      path += platform::JoinSurrogates(c, name[++i]);
    } else if (c == L'\\') {
      path += kEscapedBackslash;
    } else if (hasBytes && IsByte(c, kEngineByteBase)) {
      path += static_cast<wchar_t>(c - kEngineByteBase + kEscapedByteBase);
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
    } else if (IsByte(c, kEscapedByteBase)) {
      if (!isMarked) name += kEngineByteMark;
      isMarked = true;
      name += static_cast<wchar_t>(c - kEscapedByteBase + kEngineByteBase);
    } else {
      name += c;
    }
  }
  return name;
}

}  // namespace morvunp::rar
