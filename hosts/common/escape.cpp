#include "hosts/common/escape.h"

#include <cstdio>

#include "morvunp/platform/text.h"

namespace host {
namespace {

using morvunp::platform::kEscapedByteBase;

constexpr bool IsRawByte(wchar_t c) {
  return c >= kEscapedByteBase + 0x80 && c <= kEscapedByteBase + 0xff;
}

}  // namespace

std::string EscapeOf(wchar_t c) {
  if (c == morvunp::platform::kEscapedBackslash) return "\\\\";
  const auto code = static_cast<std::uint32_t>(IsRawByte(c) ? c - kEscapedByteBase : c);
  const char* format = code <= 0xff ? "\\x%02x" : code <= 0xffff ? "\\u%04x" : "\\U%08x";
  char escape[16];
  std::snprintf(escape, sizeof escape, format, code);
  return escape;
}

}  // namespace host
