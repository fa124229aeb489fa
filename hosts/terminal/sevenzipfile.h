// What a file's name and first bytes tell about 7z archives.
#pragma once

#include <string>

namespace terminal {

struct SevenZipTraits {
  /// The file begins as a 7z archive does.
  bool hasSignature = false;
  /// It is also named as the first volume of a split set.
  bool isFirstVolume = false;
  /// It begins as a 7z archive or as a program that may carry one. Any other
  /// file would be searched to its end in vain.
  bool mayBeOne = false;
};

/// `path` in the library's form.
SevenZipTraits SevenZipTraitsOf(const std::wstring& path);

/// True when the library can load the engine.
bool HasSevenZipEngine();

}  // namespace terminal
