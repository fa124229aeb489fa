// Text from archives made safe for a terminal.
//
// Names come from strangers: control characters could drive the terminal, and
// directional overrides could make a name read as another one. Such
// characters are shown as escapes: \x1b, \u202e.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace terminal {

/// Appends a path in the library's form with "/" between its components. A
/// backslash in the result always begins an escape.
void AppendPath(std::string& out, std::wstring_view path);

/// As AppendPath, but no more than `columns` terminal columns of it.
void AppendPathCut(std::string& out, std::wstring_view path, std::size_t columns);

/// Appends free text; line ends and backslashes stay as they are.
void AppendText(std::string& out, std::wstring_view text);

std::string ShownPath(std::wstring_view path);
/// The same for a path in this system's own form.
std::string ShownNativePath(std::string_view path);
std::string ShownText(std::wstring_view text);

/// Appends a JSON string in UTF-8, with its quotes, safe for a terminal too.
/// What UTF-8 cannot express becomes U+FFFD.
void AppendJsonString(std::string& out, std::wstring_view text);

void AppendNumber(std::string& out, std::uint64_t number);
/// Right-aligned in `columns`.
void AppendNumber(std::string& out, std::uint64_t number, std::size_t columns);
/// With a space between groups of three digits.
std::string GroupedNumber(std::uint64_t number);

}  // namespace terminal
