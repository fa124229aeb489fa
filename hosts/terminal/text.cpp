#include "text.h"

#include <wchar.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "hosts/common/escape.h"
#include "morvunp/platform/text.h"
#include "platform/unicode.h"

namespace terminal {
namespace {

using host::IsEncodable;
using host::NeedsEscape;

enum class Form { kPath, kText };

constexpr bool IsAsciiPrintable(wchar_t c) { return c >= 0x20 && c < 0x7f; }

/// Appends the characters that need more than a copy or an escape in the
/// terminal's codeset and returns how many they are.
std::size_t AppendForeignRun(std::string& out, std::wstring_view text) {
  std::size_t length = 0;
  while (length < text.size() && text[length] > 0x9f && !NeedsEscape(text[length])) ++length;
  out += morvunp::platform::ToNativeText(text.substr(0, length));
  return length;
}

/// Appends one ASCII character or escape.
void AppendSimple(std::string& out, wchar_t c, Form form) {
  if (form == Form::kPath && c == L'\\') {
    out += '/';
  } else if (form == Form::kPath && c == L'/') {
    out += host::EscapeOf(c);
  } else if (IsAsciiPrintable(c) || (form == Form::kText && c == L'\n')) {
    out += static_cast<char>(c);
  } else {
    out += host::EscapeOf(c);
  }
}

/// How many characters at the start are shown as they are, or as "/". Nearly
/// all texts are one such run, so most of it is looked at in blocks, which the
/// compiler turns into vector operations.
std::size_t PlainLength(std::wstring_view text, Form form) {
  constexpr std::size_t kStep = 16;
  const wchar_t refused = form == Form::kPath ? L'/' : L'\0';
  const auto isPlain = [&](wchar_t c) { return IsAsciiPrintable(c) && c != refused; };
  std::size_t length = 0;
  for (; length + kStep <= text.size(); length += kStep) {
    unsigned plain = 0;
    for (std::size_t i = 0; i < kStep; ++i) plain += isPlain(text[length + i]) ? 1U : 0U;
    if (plain != kStep) break;
  }
  while (length < text.size() && isPlain(text[length])) ++length;
  return length;
}

std::size_t AppendPlainRun(std::string& out, std::wstring_view text, Form form) {
  const char separator = form == Form::kPath ? '/' : '\\';
  const std::size_t length = PlainLength(text, form);
  const std::size_t before = out.size();
  out.resize(before + length);
  std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length),
                 out.begin() + static_cast<std::ptrdiff_t>(before),
                 [&](wchar_t c) { return c == L'\\' ? separator : static_cast<char>(c); });
  return length;
}

void AppendShown(std::string& out, std::wstring_view text, Form form) {
  while (!text.empty()) {
    text.remove_prefix(AppendPlainRun(out, text, form));
    if (text.empty()) return;
    const wchar_t c = text.front();
    const bool isSimple = IsAsciiPrintable(c) || NeedsEscape(c);
    if (isSimple) AppendSimple(out, c, form);
    text.remove_prefix(isSimple ? 1 : AppendForeignRun(out, text));
  }
}

/// Columns of a character that is shown as itself. The locale may not know
/// it; then one column is the best guess.
std::size_t ColumnsOf(wchar_t c) {
  const int columns = wcwidth(c);
  return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

void AppendJsonEscape(std::string& out, wchar_t c) {
  if (c == L'"' || c == L'\\') {
    out += '\\';
    out += static_cast<char>(c);
    return;
  }
  const auto append = [&](wchar_t unit) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit) & 0xffff);
    out += escape;
  };
  if (c < morvunp::platform::kFirstOfTwoUnits) return append(c);
  append(morvunp::platform::HighSurrogateOf(c));
  append(morvunp::platform::LowSurrogateOf(c));
}

}  // namespace

void AppendPath(std::string& out, std::wstring_view path) { AppendShown(out, path, Form::kPath); }

void AppendPathCut(std::string& out, std::wstring_view path, std::size_t columns) {
  std::string piece;
  for (std::size_t i = 0; i < path.size(); ++i) {
    piece.clear();
    AppendShown(piece, path.substr(i, 1), Form::kPath);
    const bool isForeign = !IsAsciiPrintable(path[i]) && !NeedsEscape(path[i]);
    const std::size_t needed = isForeign ? ColumnsOf(path[i]) : piece.size();
    if (needed > columns) return;
    columns -= needed;
    out += piece;
  }
}

void AppendText(std::string& out, std::wstring_view text) { AppendShown(out, text, Form::kText); }

std::string ShownPath(std::wstring_view path) {
  std::string shown;
  AppendPath(shown, path);
  return shown;
}

std::string ShownNativePath(std::string_view path) {
  return ShownPath(morvunp::platform::ToLibraryPath(path));
}

std::string ShownText(std::wstring_view text) {
  std::string shown;
  AppendText(shown, text);
  return shown;
}

void AppendJsonString(std::string& out, std::wstring_view text) {
  out += '"';
  for (const wchar_t c : text) {
    if (c == L'"' || c == L'\\' || (NeedsEscape(c) && IsEncodable(c))) {
      AppendJsonEscape(out, c);
    } else {
      morvunp::platform::AppendUtf8(out, IsEncodable(c) ? c : L'\ufffd');
    }
  }
  out += '"';
}

void AppendNumber(std::string& out, std::uint64_t number) { AppendNumber(out, number, 0); }

void AppendNumber(std::string& out, std::uint64_t number, std::size_t columns) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  const auto length = static_cast<std::size_t>(end - digits);
  if (length < columns) out.append(columns - length, ' ');
  out.append(digits, length);
}

std::string GroupedNumber(std::uint64_t number) {
  std::string text;
  AppendNumber(text, number);
  for (std::size_t place = text.size(); place > 3; place -= 3) text.insert(place - 3, 1, ' ');
  return text;
}

}  // namespace terminal
