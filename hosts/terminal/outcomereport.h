// Names what did not come out, and why.
#pragma once

#include <cstdint>

#include "itemproblems.h"
#include "plan.h"
#include "unpackwatch.h"

namespace terminal {

struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  /// Bytes of the files that came out.
  std::uint64_t bytes = 0;
  /// Items that did not come out.
  std::uint64_t missing = 0;
};

struct ReportSettings {
  /// The run was stopped by the user.
  bool stopped = false;
  /// Existing files were kept only because nobody could be asked.
  bool keptUnasked = false;
  /// What the unpacker told of single items; null for nothing.
  const ItemProblems* problems = nullptr;
};

/// Writes a line to stderr for each planned item that did not come out.
Totals ReportOutcome(Archive& archive, const Request& request, const UnpackWatch& watch,
                     const ReportSettings& settings);

}  // namespace terminal
