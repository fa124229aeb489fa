// What a run may do at most.
#pragma once

#include "morvunp/unpackoptions.h"

namespace morvunp::output {

/// Keeps account of what a run has done of what UnpackLimits allow it.
class Budget {
 public:
  explicit Budget(const morvunp::UnpackLimits& limits) : m_limits(limits) {}

  /// False when this is too much.
  bool TakeItem() { return Take(m_nItems, 1, m_limits.items); }
  bool TakeBytes(ULONGLONG bytes) { return Take(m_nBytes, bytes, m_limits.bytes); }
  bool LimitsDepth() const { return m_limits.depth.has_value(); }
  bool AllowsDepth(ULONGLONG folders) const {
    return !m_limits.depth || folders <= *m_limits.depth;
  }

 private:
  static bool Take(ULONGLONG& taken, ULONGLONG more, const std::optional<ULONGLONG>& limit) {
    if (!limit) return true;
    if (taken > *limit || more > *limit - taken) return false;
    taken += more;
    return true;
  }

  const morvunp::UnpackLimits& m_limits;
  ULONGLONG m_nItems = 0;
  ULONGLONG m_nBytes = 0;
};

}  // namespace morvunp::output
