// Folders and files that exist for one test.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace testsupport {

/// A fresh folder, removed with all that is in it: under TMPDIR or /tmp, or
/// under /var/tmp where the former keeps no extended attributes, which hold
/// what the system has no attributes for.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// The folder itself, or `sub` in it, as a path of the system.
  std::string Path(std::string_view sub = {}) const;
  /// The same place in the library's form; `sub` is a path of the system too.
  std::wstring LibraryPath(std::string_view sub = {}) const;

 private:
  std::string m_strPath;
};

/// Creates or replaces a file, making the folders above it. Throws on failure.
void WriteFile(const std::string& path, std::string_view bytes);
/// The bytes of a file. Throws when it cannot be read.
std::string ReadFile(const std::string& path);
/// True for anything at this path, a dangling symbolic link included.
bool Exists(const std::string& path);

/// All that is below a folder, by path relative to it. A file `a` has its
/// content under "a", a folder an empty text under "a/", a symbolic link its
/// target under "a@". Links are not followed.
std::map<std::string, std::string> TreeOf(const std::string& folder);

}  // namespace testsupport
