// The first bytes of a file, by which most formats are told apart.
#pragma once

#include <string>

namespace host {

/// The first eight bytes of the file at `path`, a path of this system; fewer
/// where it is shorter, none where it cannot be read.
std::string BeginningOf(const std::string& path);

}  // namespace host
