// Names as the engine writes them and as the library does.
#pragma once

#include <string>
#include <string_view>

namespace morvunp::rar {

/// The engine holds names of fewer characters than this.
inline constexpr std::size_t kEngineNameCapacity = 1024;
/// Longer paths of output files are cut by the engine without a word.
inline constexpr std::size_t kLongestOutputPath = 2047;

/// The path of an archive's item, its separators turned into backslashes. A
/// backslash that is part of a name, as systems other than the host's allow,
/// becomes the escape of platform::ToLibraryPath, and so do bytes that are no
/// text: neither can turn into a folder.
std::wstring FromEngineName(std::wstring_view name);

/// The inverse, for paths of this system too.
std::wstring ToEngineName(std::wstring_view path);

}  // namespace morvunp::rar
