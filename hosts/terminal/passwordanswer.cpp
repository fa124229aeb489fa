#include "passwordanswer.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

#include "exitcode.h"
#include "maskedline.h"
#include "platform/text.h"
#include "question.h"
#include "text.h"

namespace terminal {
namespace {

constexpr int kMostAttempts = 3;

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
  if (!std::getline(input, line)) throw CommandError(name + ": holds no password");
  if (line.ends_with('\r')) line.pop_back();
  return WideOf(line);
}

}  // namespace

std::wstring ReadPasswordFile(const std::string& path) {
  if (path == "-") return FirstLine(std::cin, "standard input");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw CommandError(ShownNativePath(path) + ": " + std::strerror(errno));
  return FirstLine(file, ShownNativePath(path));
}

std::optional<std::wstring> PasswordAnswer::Get() {
  ++timesAsked_;
  if (given_) return given_;
  if (typed_ || wasCancelled_ || !CanAsk()) return typed_;
  ++attempts_;
  const auto line = AskMasked("Password: ");
  wasCancelled_ = !line;
  if (line) typed_ = WideOf(*line);
  return typed_;
}

bool PasswordAnswer::Reject() {
  const bool wasTyped = typed_.has_value();
  typed_.reset();
  return wasTyped && attempts_ < kMostAttempts;
}

}  // namespace terminal
