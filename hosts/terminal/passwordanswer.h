// Where passwords come from.
#pragma once

#include <optional>
#include <string>

namespace terminal {

/// The first line of the file at `path`, or of standard input for "-". Throws
/// CommandError when it cannot be read.
std::wstring ReadPasswordFile(const std::string& path);

/// Answers the library's questions for a password: with the given one, or else
/// with what the person at the terminal types. One that was typed serves until
/// it is rejected, because the library asks once for every walk.
class PasswordAnswer {
 public:
  /// `given` is from a file; none to ask.
  explicit PasswordAnswer(std::optional<std::wstring> given) : given_(std::move(given)) {}

  /// None when nobody can be asked, or the question was cancelled once.
  std::optional<std::wstring> Get();
  /// The last answer was wrong. True when it makes sense to ask again.
  bool Reject();
  /// How often the library has asked.
  int TimesAsked() const { return timesAsked_; }
  /// There was an answer to the last question.
  bool HasAnswer() const { return given_ || typed_; }
  /// The last answer was typed.
  bool IsTyped() const { return typed_.has_value(); }
  bool WasCancelled() const { return wasCancelled_; }

 private:
  std::optional<std::wstring> given_;
  std::optional<std::wstring> typed_;
  int attempts_ = 0;
  int timesAsked_ = 0;
  bool wasCancelled_ = false;
};

}  // namespace terminal
