// Taking the library's backslash paths apart and joining them.
#pragma once

#include <string>
#include <string_view>

namespace morvunp::frame {

inline constexpr wchar_t kSeparator = L'\\';

inline bool HasParent(std::wstring_view path) { return path.find(kSeparator) != path.npos; }

/// The part before the last backslash; empty without one.
inline std::wstring_view ParentOf(std::wstring_view path) {
  const std::size_t last = path.rfind(kSeparator);
  return path.substr(0, last != path.npos ? last : 0);
}

/// The part after the last backslash; the whole path without one.
inline std::wstring_view NameOf(std::wstring_view path) {
  const std::size_t last = path.rfind(kSeparator);
  return last != path.npos ? path.substr(last + 1) : path;
}

inline std::wstring Join(std::wstring_view folder, std::wstring_view name) {
  std::wstring path;
  path.reserve(folder.size() + 1 + name.size());
  return path.append(folder).append(1, kSeparator).append(name);
}

/// The part of a name after its last dot; empty without one.
inline std::wstring_view ExtensionOf(std::wstring_view name) {
  const std::size_t dot = name.rfind(L'.');
  return dot != name.npos ? name.substr(dot + 1) : std::wstring_view();
}

/// The part of a name before its last dot; the whole name without one.
inline std::wstring_view TitleOf(std::wstring_view name) {
  return name.substr(0, name.rfind(L'.'));
}

}  // namespace morvunp::frame
