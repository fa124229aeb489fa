#include "hosts/common/stoprequest.h"

namespace host {

void StopRequest::PostTo(HWND progressWindow) {
  constexpr std::chrono::milliseconds kInterval{50};
  const auto now = Clock::now();
  if (!isMade_ || now - lastPost_ < kInterval) return;
  lastPost_ = now;
  PostMessageW(progressWindow, WM_UNPACK_STOP, 0, 0);
}

void StopRequest::Answer(bool stops) {
  isMade_ = false;
  // The next request is another one, however soon it comes.
  lastPost_ = {};
  stopped_ = stopped_ || stops;
}

}  // namespace host
