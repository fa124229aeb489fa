// What stands where the engine is to write.
#pragma once

#include <string>

namespace rar {

/// An existing file at the place of an output file. The engine would write
/// into it, reaching all its other names, and would remove it when it fails.
/// So it gets another name meanwhile, and its own back unless it is discarded.
class ExistingFile {
 public:
  /// Moves what is at `path` aside.
  explicit ExistingFile(std::wstring path);
  ~ExistingFile();
  ExistingFile(const ExistingFile&) = delete;
  ExistingFile& operator=(const ExistingFile&) = delete;

  /// The place is free.
  bool IsAway() const { return m_bAway; }
  /// Another file has taken its place for good.
  void Discard();

 private:
  bool MoveAside();

  std::wstring m_strPath;
  /// Its name meanwhile; empty when nothing is set aside.
  std::wstring m_strAside;
  bool m_bAway;
};

}  // namespace rar
