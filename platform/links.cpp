// Where symbolic links lead.
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "morvunp/platform/files.h"
#include "morvunp/platform/text.h"

namespace platform = morvunp::platform;

std::wstring platform::ResolvedPath(const std::wstring& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(
      realpath(ToNativePath(path).c_str(), nullptr), &std::free);
  if (resolved != nullptr) return ToLibraryPath(resolved.get());
  FailWithErrno(errno);
  return {};
}
