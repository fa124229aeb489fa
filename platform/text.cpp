#include "morvunp/platform/text.h"

#include <wchar.h>
#include <cwctype>

#include <algorithm>

#include "platform/codepage.h"

namespace platform = morvunp::platform;

namespace {

// Bytes from 0x80 up that no code page explains end at U+F780 to U+F7FF.
constexpr wchar_t kUndefinedByteBase = 0xF700;

const platform::CodePage& CodePageOf(UINT codePage) {
  return codePage == CP_THREAD_ACP ? platform::LocaleCodePage() : platform::AnsiCodePage();
}

std::wstring Decode(std::string_view bytes, const platform::CodePage& page) {
  if (auto wide = page.Decode(bytes)) return std::move(*wide);
  return platform::LanguageCodePage().DecodeLoosely(bytes, kUndefinedByteBase);
}

std::string Encode(std::wstring_view wide, const platform::CodePage& page, const char* lacking,
                   BOOL* usedDefault) {
  std::string bytes;
  bytes.reserve(wide.size());
  for (const wchar_t character : wide) {
    if (character >= 0 && character < 0x80) {
      bytes += static_cast<char>(character);
    } else if (const auto encoded = page.EncodeOne(character)) {
      bytes += *encoded;
    } else {
      bytes += lacking;
      if (usedDefault != nullptr) *usedDefault = TRUE;
    }
  }
  return bytes;
}

/// The way in which both conversions hand their result out.
template <class Text, class Character>
int CopyOut(const Text& text, Character* buffer, int capacity) {
  const int needed = static_cast<int>(text.size());
  if (capacity == 0) return needed;
  if (capacity < needed) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::copy(text.begin(), text.end(), buffer);
  return needed;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD, const char* bytes, int length, wchar_t* wide,
                        int capacity) {
  const std::string_view text(bytes, static_cast<std::size_t>(length));
  // Nearly all names are plain ASCII, which needs no conversion.
  if (platform::IsPlainAscii(text)) return CopyOut(text, wide, capacity);
  return CopyOut(Decode(text, CodePageOf(codePage)), wide, capacity);
}

int WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* wide, int length, char* bytes,
                        int capacity, const char* defaultChar, BOOL* usedDefault) {
  const std::string encoded = Encode({wide, static_cast<std::size_t>(length)}, CodePageOf(codePage),
                                     defaultChar != nullptr ? defaultChar : "?", usedDefault);
  return CopyOut(encoded, bytes, capacity);
}

wchar_t* CharUpperW(wchar_t* text) {
  for (wchar_t* c = text; *c != 0; ++c) {
    *c = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(*c)));
  }
  return text;
}

int _wcsicmp(LPCWSTR left, LPCWSTR right) { return wcscasecmp(left, right); }

std::string platform::ToNativeText(std::wstring_view text) {
  return Encode(text, LocaleCodePage(), "?", nullptr);
}
