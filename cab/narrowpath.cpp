#include "cab/narrowpath.h"

#include <charconv>

#include "frame/ansitext.h"
#include "frame/itempath.h"
#include "morvunp/platform/platform.h"

namespace morvunp::cab {
namespace {

/// Starts an escape: this byte and eight hexadecimal digits.
constexpr char kEscape = '\x01';
constexpr std::size_t kDigits = 8;

void AppendEscaped(std::string& narrow, wchar_t c) {
  constexpr std::string_view kHexadecimal = "0123456789abcdef";
  narrow += kEscape;
  for (unsigned shift = 4 * kDigits; shift > 0;) {
    shift -= 4;
    narrow += kHexadecimal[static_cast<DWORD>(c) >> shift & 0xF];
  }
}

/// False when the code page lacks the character.
bool AppendEncoded(std::string& narrow, wchar_t c) {
  constexpr int kMostBytes = 16;
  char bytes[kMostBytes];
  BOOL isLacking = FALSE;
  const int length = WideCharToMultiByte(CP_ACP, 0, &c, 1, bytes, kMostBytes, nullptr, &isLacking);
  if (isLacking != FALSE || length <= 0) return false;
  narrow.append(bytes, static_cast<std::size_t>(length));
  return true;
}

}  // namespace

std::string NarrowPath(std::wstring_view path) {
  std::string narrow;
  for (const wchar_t c : path) {
    if (c > kEscape && c < 0x7F) {
      narrow += static_cast<char>(c);
    } else if (c == kEscape || !AppendEncoded(narrow, c)) {
      AppendEscaped(narrow, c);
    }
  }
  return narrow;
}

std::wstring WidePath(std::string_view narrow) {
  std::wstring path;
  while (!narrow.empty()) {
    const std::size_t plain = narrow.find(kEscape);
    path += frame::DecodeAnsi(narrow.substr(0, plain));
    if (plain == narrow.npos) break;
    const std::string_view digits = narrow.substr(plain + 1, kDigits);
    DWORD c = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), c, 16);
    path += static_cast<wchar_t>(c);
    narrow.remove_prefix(plain + 1 + digits.size());
  }
  return path;
}

std::wstring CabinetPath(const char* folder, const char* name) {
  std::wstring path = WidePath(folder);
  if (!path.empty() && !path.ends_with(frame::kSeparator)) path += frame::kSeparator;
  return ExistingCabinet(path + frame::DecodeAnsi(name));
}

std::wstring ExistingCabinet(const std::wstring& path) {
  if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return path;
  const std::wstring found = platform::NameIgnoringCase(path);
  return found.empty() ? path : found;
}

}  // namespace morvunp::cab
