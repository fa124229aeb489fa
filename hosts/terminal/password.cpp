#include "password.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "exitcode.h"
#include "maskedline.h"
#include "morvunp/platform/text.h"
#include "question.h"
#include "text.h"

namespace terminal {
namespace {

/// Bytes of a password; a file that was named by mistake is not read whole.
constexpr std::size_t kLongest = 65536;

/// What is typed or kept in a file is in the locale's codeset, whatever code
/// page the names of an archive have.
std::wstring WideOf(const std::string& line) {
  const auto length = static_cast<int>(line.size());
  std::wstring wide(static_cast<std::size_t>(
                        MultiByteToWideChar(CP_THREAD_ACP, 0, line.data(), length, nullptr, 0)),
                    L'\0');
  MultiByteToWideChar(CP_THREAD_ACP, 0, line.data(), length, wide.data(),
                      static_cast<int>(wide.size()));
  return wide;
}

std::wstring FirstLine(std::istream& input, const std::string& name) {
  std::string line;
  char c = 0;
  while (input.get(c) && c != '\n') {
    line += c;
    if (line.size() > kLongest) throw CommandError(name + ": too long for a password");
  }
  if (line.empty() && !input) throw CommandError(name + ": holds no password");
  if (line.ends_with('\r')) line.pop_back();
  return WideOf(line);
}

std::optional<std::wstring> AskPassword() {
  const auto line = AskMasked("Password: ");
  return line ? std::optional(WideOf(*line)) : std::nullopt;
}

}  // namespace

std::wstring ReadPasswordFile(const std::string& path) {
  if (path == "-") return FirstLine(std::cin, "standard input");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw CommandError(ShownNativePath(path) + ": " + std::strerror(errno));
  return FirstLine(file, ShownNativePath(path));
}

host::PasswordAnswer AnswerOnTerminal(std::optional<std::wstring> given) {
  return {std::move(given), CanAsk() ? AskPassword : host::PasswordAnswer::AskUser()};
}

}  // namespace terminal
