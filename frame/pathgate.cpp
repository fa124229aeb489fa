#include "frame/pathgate.h"

#include <algorithm>

#include "frame/itempath.h"
#include "morvunp/outputplace.h"

namespace frame {
namespace {

/// Separators of either system, and what ends a path.
bool IsForbidden(wchar_t c) { return c == kSeparator || c == L'/' || c == L'\0'; }

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

}  // namespace frame

bool IsSafeItem(const std::wstring& path, const std::wstring& name) {
  if (frame::NameOf(path) != name) return false;
  std::wstring_view rest = path;
  for (bool inRoot = true;; inRoot = false) {
    const std::size_t end = rest.find(frame::kSeparator);
    if (!frame::IsSafeName(rest.substr(0, end), inRoot)) return false;
    if (end == rest.npos) return true;
    rest.remove_prefix(end + 1);
  }
}
