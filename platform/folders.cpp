// Looking into folders.
#include <dirent.h>

#include <memory>

#include "morvunp/platform/files.h"
#include "morvunp/platform/text.h"

namespace platform = morvunp::platform;

std::wstring platform::NameIgnoringCase(const std::wstring& path) {
  const std::size_t nameStart = path.rfind(L'\\') + 1;
  const std::wstring folder = path.substr(0, nameStart);
  const std::wstring name = path.substr(nameStart);
  const std::string native = nameStart == 0 ? "." : ToNativePath(folder);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(native.c_str()), closedir);
  std::wstring found;
  while (const dirent* const entry = entries != nullptr ? readdir(entries.get()) : nullptr) {
    std::wstring candidate = ToLibraryPath(entry->d_name);
    if (_wcsicmp(candidate.c_str(), name.c_str()) != 0) continue;
    if (found.empty() || candidate < found) found = std::move(candidate);
  }
  return found.empty() ? found : folder + found;
}
