// Where the command gets passwords from.
#pragma once

#include <optional>
#include <string>

#include "hosts/common/passwordanswer.h"

namespace terminal {

/// The first line of the file at `path`, or of standard input for "-". Throws
/// CommandError when it cannot be read.
std::wstring ReadPasswordFile(const std::string& path);

/// Answers with `given`, or asks the person at the terminal.
host::PasswordAnswer AnswerOnTerminal(std::optional<std::wstring> given);

}  // namespace terminal
