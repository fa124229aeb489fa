// The two forms of a path. File names of this system are bytes; the library's
// are text. What the locale's codeset cannot express either way is kept by
// escapes, so that every file that exists can be named.
#include <cwchar>

#include "platform/codepage.h"
#include "platform/text.h"

namespace {

constexpr wchar_t kByteBase = 0xDC00;
constexpr wchar_t kEscapedBackslash = kByteBase + '\\';

bool IsEscapedByte(wchar_t c) {
  return c == kEscapedBackslash || (c >= kByteBase + 0x80 && c <= kByteBase + 0xFF);
}

/// UTF-8 of any code point, lone surrogates included: the last resort for a
/// character that the codeset lacks, so that different names stay different.
std::string Utf8Of(wchar_t character) {
  const auto c = static_cast<std::uint32_t>(character);
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x800) return {static_cast<char>(0xC0 | c >> 6), tail(0)};
  if (c < 0x10000) return {static_cast<char>(0xE0 | c >> 12), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | ((c >> 18) & 0x07)), tail(12), tail(6), tail(0)};
}

std::string NativeOf(wchar_t c, const platform::CodePage& page) {
  if (IsEscapedByte(c)) return {static_cast<char>(c - kByteBase)};
  if (const auto encoded = page.EncodeOne(c)) return *encoded;
  return Utf8Of(c);
}

}  // namespace

std::wstring platform::ToLibraryPath(std::string_view native) {
  std::wstring path = LocaleCodePage().DecodeLoosely(native, kByteBase);
  for (wchar_t& c : path) {
    if (c == L'\\') {
      c = kEscapedBackslash;
    } else if (c == L'/') {
      c = L'\\';
    }
  }
  return path;
}

std::string platform::ToNativePath(std::wstring_view path) {
  std::string native;
  native.reserve(path.size());
  const CodePage* page = nullptr;
  for (const wchar_t c : path) {
    if (c == L'\\') {
      native += '/';
    } else if (c >= 0 && c < 0x80) {
      native += static_cast<char>(c);
    } else {
      if (page == nullptr) page = &LocaleCodePage();
      native += NativeOf(c, *page);
    }
  }
  return native;
}
