// What a file's name and first bytes tell about 7z archives.
#pragma once

#include <string>
#include <string_view>

namespace host {

/// What every 7z archive begins with.
inline constexpr std::string_view kSevenZipSignature("7z\xBC\xAF\x27\x1C");

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

/// Lets the process have as many files open as the system allows it: all
/// volumes of a split set are open at once.
void AllowManyVolumes();

/// True when the library can load the engine.
bool HasSevenZipEngine();

}  // namespace host
