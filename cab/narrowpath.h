// Paths as the cabinet interface carries them: narrow texts.
#pragma once

#include <string>
#include <string_view>

namespace morvunp::cab {

/// A path in the ANSI code page. Characters that the code page lacks are kept
/// by an escape, so that every file that exists can be opened; the interface
/// only hands the path through.
std::string NarrowPath(std::wstring_view path);
/// The inverse. Names of cabinets that come out of a cabinet are plain ANSI.
std::wstring WidePath(std::string_view narrow);

/// The path of a cabinet that another names, in the folder that the interface
/// carries; `name` is plain ANSI.
std::wstring CabinetPath(const char* folder, const char* name);

/// `path` itself when it exists, or else the one file of its folder whose name
/// differs in case only. Sets name their cabinets in any case.
std::wstring ExistingCabinet(const std::wstring& path);

}  // namespace morvunp::cab
