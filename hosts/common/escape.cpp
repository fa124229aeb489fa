#include "hosts/common/escape.h"

#include <cstdio>

namespace host {
namespace {

constexpr bool IsRawByte(wchar_t c) { return c >= 0xdc80 && c <= 0xdcff; }

}  // namespace

std::string EscapeOf(wchar_t c) {
  if (c == 0xdc5c) return "\\\\";
  const auto code = static_cast<std::uint32_t>(IsRawByte(c) ? c - 0xdc00 : c);
  const char* format = code <= 0xff ? "\\x%02x" : code <= 0xffff ? "\\u%04x" : "\\U%08x";
  char escape[16];
  std::snprintf(escape, sizeof escape, format, code);
  return escape;
}

}  // namespace host
