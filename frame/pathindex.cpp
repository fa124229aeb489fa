#include "frame/pathindex.h"

#include <cwctype>

#include "frame/keyedhash.h"
#include "morvunp/platform/platform.h"

namespace morvunp::frame {
namespace {

wchar_t Folded(wchar_t c) {
  // Nearly all characters are ASCII; the locale folds the rest.
  if (c >= 0 && c < 0x80) return c >= L'A' && c <= L'Z' ? c | 0x20 : c;
  return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
}

}  // namespace

bool SamePath(const std::wstring& left, const std::wstring& right) {
  return left.size() == right.size() &&
         (left == right || _wcsicmp(left.c_str(), right.c_str()) == 0);
}

std::size_t FoldedHash(const std::wstring& path) {
  TextHash hash;
  for (const wchar_t c : path) hash.Add(Folded(c));
  return static_cast<std::size_t>(hash.Result());
}

}  // namespace morvunp::frame
