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

bool IsByte(wchar_t c, wchar_t base) { return c >= base + 0x80 && c <= base + 0xFF; }

}  // namespace

std::wstring FromEngineName(std::wstring_view name) {
  const bool hasBytes = name.find(kEngineByteMark) != name.npos;
  std::wstring path;
  path.reserve(name.size());
  for (const wchar_t c : name) {
    if (c == L'/') {
      path += frame::kSeparator;
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
