// Names what did not come out, and why.
#pragma once

#include <cstdint>
#include <functional>

#include "hosts/common/itemproblems.h"
#include "hosts/common/plan.h"
#include "hosts/common/unpackwatch.h"

namespace host {

struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  /// Bytes of the files that came out.
  std::uint64_t bytes = 0;
  /// Items that did not come out.
  std::uint64_t missing = 0;
};

struct ReportSettings {
  /// Why existing files were kept.
  Reason kept = Reason::Of("kept the existing file");
};

using TellMissing = std::function<void(const Item&, const Reason&)>;

/// Calls `tell` for each planned item that did not come out.
Totals ReportOutcome(Archive& archive, const Request& request, const UnpackWatch& watch,
                     const ReportSettings& settings, const TellMissing& tell);

}  // namespace host
