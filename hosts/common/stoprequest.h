// The user's wish to stop a running unpack, on its way to the library.
#pragma once

#include <chrono>

#include "morvunp/messages.h"

namespace host {

class StopRequest {
 public:
  /// The user wants to stop; the library's question will follow.
  void Make() { isMade_ = true; }
  bool IsMade() const { return isMade_; }

  /// To be called whenever the library pumps messages. It may drop a request
  /// between two files, so it is made again until the question appears; not at
  /// every call, because the library calls for each message that it takes.
  void PostTo(HWND progressWindow);

  /// The library has asked; true: the user does stop.
  void Answer(bool stops);
  /// The run was cancelled in another way.
  void Cancel() { stopped_ = true; }
  /// The user has cancelled or interrupted the unpack.
  bool Stopped() const { return stopped_; }

 private:
  using Clock = std::chrono::steady_clock;

  bool isMade_ = false;
  bool stopped_ = false;
  Clock::time_point lastPost_{};
};

}  // namespace host
