#include "output/pathgate.h"

#include <algorithm>

#include "frame/itempath.h"
#include "morvunp/outputplace.h"

namespace morvunp::output {
namespace {

/// Separators of either system, and what ends a path.
bool IsForbidden(wchar_t c) { return c == frame::kSeparator || c == L'/' || c == L'\0'; }

bool StartsWithDrive(std::wstring_view name) {
  if (name.size() < 2 || name[1] != L':') return false;
  const wchar_t letter = name[0] | 0x20;
  return letter >= L'a' && letter <= L'z';
}

}  // namespace

bool IsSafeName(std::wstring_view name, bool inRoot) {
  const bool isSpecial = name.size() <= 2 && name.find_first_not_of(L'.') == name.npos;
  if (isSpecial) return false;
  return std::none_of(name.begin(), name.end(), IsForbidden) && !(inRoot && StartsWithDrive(name));
}

bool IsSafePath(std::wstring_view path, bool inRoot) {
  for (;; inRoot = false) {
    const std::size_t end = path.find(frame::kSeparator);
    if (!IsSafeName(path.substr(0, end), inRoot)) return false;
    if (end == path.npos) return true;
    path.remove_prefix(end + 1);
  }
}

}  // namespace morvunp::output

bool morvunp::IsSafeItem(std::wstring_view path, std::wstring_view name) {
  return frame::NameOf(path) == name && output::IsSafePath(path, true);
}
