// Text in the ANSI code page, as archives and engines hold it.
#pragma once

#include <string>
#include <string_view>

namespace frame {

std::wstring DecodeAnsi(std::string_view bytes);

}  // namespace frame
