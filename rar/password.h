// Passwords on their way to the engine.
#pragma once

#include <optional>
#include <string>

namespace morvunp::rar {

/// Asks the user. None when there is no answer.
std::optional<std::wstring> AskPassword();

/// The narrow form that the engine takes.
std::string NarrowPassword(const std::wstring& password);

}  // namespace morvunp::rar
