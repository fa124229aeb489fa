// The password of an archive, however often the library asks for it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace host {

/// Answers the library's questions for a password: with the given one, or else
/// with what the user types. One that was typed serves until it is rejected,
/// because the library asks once for every walk.
class PasswordAnswer {
 public:
  /// None when the user cancels.
  using AskUser = std::function<std::optional<std::wstring>()>;

  explicit PasswordAnswer(AskUser askUser) : askUser_(std::move(askUser)) {}
  /// `given` was told beforehand; none to ask with `askUser`, which is null
  /// when nobody can be asked.
  PasswordAnswer(std::optional<std::wstring> given, AskUser askUser)
      : given_(std::move(given)), askUser_(std::move(askUser)) {}

  /// None when nobody can be asked, or the question was cancelled once.
  std::optional<std::wstring> Get();
  /// The last answer was wrong. True when it makes sense to ask again.
  bool Reject();
  /// The user begins something new: a cancelled question is asked again.
  void StartOver();
  /// How often the library has asked.
  int TimesAsked() const { return timesAsked_; }
  /// There was an answer to the last question.
  bool HasAnswer() const { return given_ || typed_; }
  /// The last answer was typed.
  bool IsTyped() const { return typed_.has_value(); }
  bool WasCancelled() const { return wasCancelled_; }

 private:
  std::optional<std::wstring> given_;
  AskUser askUser_;
  std::optional<std::wstring> typed_;
  int attempts_ = 0;
  int timesAsked_ = 0;
  bool wasCancelled_ = false;
};

}  // namespace host
