// The two forms of a path. File names of this system are bytes; the library's
// are text. What the locale's codeset cannot express either way is kept by
// escapes, so that every file that exists can be named.
#include <cwchar>

#include "morvunp/platform/text.h"
#include "platform/codepage.h"
#include "platform/unicode.h"

namespace platform = morvunp::platform;

namespace {

using platform::kEscapedBackslash;
using platform::kEscapedByteBase;

bool IsEscapedByte(wchar_t c) {
  return c == kEscapedBackslash || (c >= kEscapedByteBase + 0x80 && c <= kEscapedByteBase + 0xFF);
}

void AppendNative(std::string& native, wchar_t c, const platform::CodePage& page) {
  if (IsEscapedByte(c)) {
    native += static_cast<char>(c - kEscapedByteBase);
  } else if (const auto encoded = page.EncodeOne(c)) {
    native += *encoded;
  } else {
    // The last resort, so that different names stay different.
    platform::AppendUtf8(native, c);
  }
}

}  // namespace

std::wstring platform::ToLibraryPath(std::string_view native) {
  std::wstring path = LocaleCodePage().DecodeLoosely(native, kEscapedByteBase);
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
      AppendNative(native, c, *page);
    }
  }
  return native;
}
