// Text in the ANSI code page, as archives and engines hold it, and the code
// page of an object.
#pragma once

#include <string>
#include <string_view>

#include "morvunp/unpackstate.h"
#include "platform/codepage.h"

namespace morvunp::frame {

/// `text` keeps its memory from one call to the next.
void DecodeAnsi(std::string_view bytes, std::wstring& text);
std::wstring DecodeAnsi(std::string_view bytes);

/// Gives the object its options. False, and what was stays, when the code page
/// is none that can be used.
bool SetOptions(CUnpackState& state, const UnpackOptions& options);

/// The code page of the object at work until the scope ends, for the operations
/// in which narrow text is converted. One without a code page of its own has the
/// thread's, also when it is called from the messages of one that has.
class CodePageScope : platform::AnsiCodePageScope {
 public:
  explicit CodePageScope(const CUnpackState& state) : AnsiCodePageScope(state.m_options.codePage) {}
};

}  // namespace morvunp::frame
