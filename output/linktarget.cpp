#include "output/linktarget.h"

#include <algorithm>

#include "frame/itempath.h"

namespace morvunp::output {

bool StaysInside(std::wstring_view linkTarget, std::size_t depth) {
  if (linkTarget.empty() || linkTarget.front() == frame::kSeparator) return false;
  std::size_t climbs = 0;
  for (bool isClimbing = true; !linkTarget.empty();) {
    const std::wstring_view component = linkTarget.substr(0, linkTarget.find(frame::kSeparator));
    linkTarget.remove_prefix(std::min(component.size() + 1, linkTarget.size()));
    if (component.empty() || component == L".") continue;
    const bool isUp = component == L"..";
    if (isUp && (!isClimbing || ++climbs > depth)) return false;
    isClimbing = isUp;
  }
  return true;
}

}  // namespace morvunp::output
