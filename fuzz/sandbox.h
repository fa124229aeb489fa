// The folders that a target reads from and unpacks into, and the watch over
// what lies around them.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace fuzz {

/// One for the process, under TMPDIR. Beside the target folder lies a planted
/// file, and in it a symbolic link that leads out.
class Sandbox {
 public:
  static Sandbox& Instance();

  /// Begins anew: nothing to read, and only the link in the target folder.
  void Clear();
  /// Puts a file into the folder to read from; its path in the library's form.
  std::wstring Put(const std::string& name, std::string_view bytes);
  /// The target folder in the library's form.
  std::wstring Target() const;
  /// Ends the process unless everything around the target folder is as it was.
  void CheckOutside() const;

 private:
  Sandbox();

  std::string Path(const char* name) const { return m_strRoot + "/" + name; }

  std::string m_strRoot;
  /// Sizes of what was put, by name.
  std::map<std::string, std::size_t> m_put;
};

/// Descriptors that the process has open.
std::size_t OpenDescriptors();

}  // namespace fuzz
