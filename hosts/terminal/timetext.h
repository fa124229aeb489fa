// Times as text. Items of an archive often share their day or even their
// second, so both writers remember the last calendar calculation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace terminal {

/// Writes `YYYY-MM-DD HH:MM:SS` in local time.
class LocalTimeText {
 public:
  /// `time` in seconds since 1970-01-01 00:00 UTC; none, not recorded, becomes
  /// blanks of the same width.
  void Append(std::string& out, std::optional<std::int64_t> time);

 private:
  void Format(std::int64_t time);

  /// The time written last, its minute since 1970 and its text.
  std::optional<std::int64_t> time_;
  std::int64_t minute_ = 0;
  std::string text_;
};

/// Writes `YYYY-MM-DDTHH:MM:SSZ`.
class UtcTimeText {
 public:
  void Append(std::string& out, std::int64_t time);

 private:
  std::int64_t day_ = 0;
  std::string date_;
};

}  // namespace terminal
