// Text in the ANSI code page, as archives and engines hold it.
#pragma once

#include <string>
#include <string_view>

namespace frame {

/// `text` keeps its memory from one call to the next.
void DecodeAnsi(std::string_view bytes, std::wstring& text);
std::wstring DecodeAnsi(std::string_view bytes);

}  // namespace frame
