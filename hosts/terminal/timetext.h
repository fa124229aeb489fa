// Times as text. Items of an archive often share their day or even their
// second, so both writers remember the last calendar calculation.
#pragma once

#include <cstdint>
#include <string>

namespace terminal {

/// Writes `YYYY-MM-DD HH:MM:SS` in local time.
class LocalTimeText {
 public:
  /// `time` in seconds since 1970-01-01 00:00 UTC; 0, not recorded, becomes
  /// blanks of the same width.
  void Append(std::string& out, std::int64_t time);

 private:
  void Calculate(std::int64_t block);

  std::int64_t block_ = -1;
  std::int64_t minuteOfBlock_ = 0;
  std::string upToHour_;
  /// The text of the time written last.
  std::int64_t time_ = 0;
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
