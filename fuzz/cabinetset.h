// The cabinets that an input holds.
#pragma once

#include <string_view>
#include <vector>

#include "fuzz/input.h"

namespace fuzz {

std::vector<std::string_view> CabinetsOf(Input& input);

}  // namespace fuzz
