// Hashing numbers that an archive chooses.
#pragma once

#include <cstddef>

#include "platform/platform.h"

namespace frame {

/// For unordered containers whose keys come out of an archive. The standard
/// library's hash of a number is the number, so that an archive could put all
/// of them into one bucket. This one differs from process to process.
struct MixedHash {
  std::size_t operator()(ULONGLONG number) const noexcept;
};

}  // namespace frame
