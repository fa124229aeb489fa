#include "hosts/common/passwordanswer.h"

namespace host {
namespace {

constexpr int kMostAttempts = 3;

}  // namespace

std::optional<std::wstring> PasswordAnswer::Get() {
  ++timesAsked_;
  if (given_) return given_;
  if (typed_ || wasCancelled_ || !askUser_) return typed_;
  ++attempts_;
  typed_ = askUser_();
  wasCancelled_ = !typed_;
  return typed_;
}

void PasswordAnswer::StartOver() {
  attempts_ = 0;
  wasCancelled_ = false;
}

bool PasswordAnswer::Reject() {
  const bool wasTyped = typed_.has_value();
  typed_.reset();
  return wasTyped && attempts_ < kMostAttempts;
}

}  // namespace host
