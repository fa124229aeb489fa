// The line that shows how far an unpack is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace terminal {

/// Lives on the last line of stderr. Costs one look at the clock for most
/// calls, because it is redrawn only some times a second.
class ProgressLine {
 public:
  /// A line that is not enabled never shows.
  explicit ProgressLine(bool enabled) : enabled_(enabled) {}

  /// Begins a run of `total` bytes.
  void Start(std::uint64_t total);
  /// `done` bytes are written; `name` is the file in hand.
  void Show(std::uint64_t done, std::wstring_view name);
  /// Removes the line before other output. The next Show brings it back.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  void Draw(std::uint64_t done, std::wstring_view name, Clock::time_point now);

  bool enabled_;
  bool visible_ = false;
  std::uint64_t total_ = 0;
  Clock::time_point start_;
  Clock::time_point lastDraw_;
};

}  // namespace terminal
