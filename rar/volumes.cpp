#include "rar/volumes.h"

#include <cwctype>

#include "frame/filesystem.h"
#include "frame/itempath.h"

namespace morvunp::rar {
namespace {

/// Counts the last run of digits up, by one more digit where it is full.
bool CountUp(std::wstring& name) {
  std::size_t end = name.size();
  while (end > 0 && std::iswdigit(static_cast<std::wint_t>(name[end - 1])) == 0) --end;
  if (end == 0) return false;
  for (std::size_t i = end; i-- > 0;) {
    if (std::iswdigit(static_cast<std::wint_t>(name[i])) == 0) {
      name.insert(i + 1, 1, L'1');
      return true;
    }
    if (name[i] != L'9') {
      ++name[i];
      return true;
    }
    name[i] = L'0';
  }
  name.insert(0, 1, L'1');
  return true;
}

/// NAME.r99 is followed by NAME.s00.
bool CountUpOldName(std::wstring& name) {
  if (!name.ends_with(L"99")) return CountUp(name);
  if (name.size() < 3) return false;
  ++name[name.size() - 3];
  name.replace(name.size() - 2, 2, L"00");
  return true;
}

}  // namespace

std::vector<std::wstring> PathsOfSet(const std::wstring& path, bool isVolume) {
  std::vector<std::wstring> paths{path};
  if (!isVolume) return paths;
  std::wstring stem(frame::TitleOf(path));
  std::wstring extension(frame::ExtensionOf(path));
  if (_wcsicmp(extension.c_str(), L"exe") == 0) extension = L"rar";
  const std::wstring_view last = frame::ExtensionOf(stem);
  const bool isNumbered = last.starts_with(L"part") || last.starts_with(L"PART");
  std::wstring old =
      extension.size() == 3 && std::iswdigit(static_cast<std::wint_t>(extension.back())) != 0
          ? extension
          : L"r-1";
  for (;;) {
    if (isNumbered) {
      if (!CountUp(stem)) break;
    } else if (old == L"r-1") {
      old = L"r00";
    } else if (!CountUpOldName(old)) {
      break;
    }
    std::wstring next = stem + L'.' + (isNumbered ? extension : old);
    if (!frame::FileExists(next)) break;
    paths.push_back(std::move(next));
  }
  return paths;
}

}  // namespace morvunp::rar
