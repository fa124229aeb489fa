// Symbolic links that an archive may make.
#pragma once

#include <string_view>

namespace morvunp::output {

/// True when a link `depth` folders below the target folder cannot lead out of
/// it, whatever other links of this kind lie there: it is relative, climbs no
/// higher than the target folder, and does all its climbing first, from the
/// folder in which it really stands.
bool StaysInside(std::wstring_view linkTarget, std::size_t depth);

}  // namespace morvunp::output
