// What the beginning of a 7z archive says of its length.
#pragma once

#include <optional>

#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// Bytes that an archive has by its own beginning; none where the stream does not
/// begin as one, or not whole. The stream stands anywhere afterwards.
std::optional<ULONGLONG> LengthOfArchive(IInStream& stream);

/// True when the stream begins as an archive and ends before that archive does.
/// The stream stands anywhere afterwards.
bool EndsBeforeArchive(IInStream& stream);

}  // namespace morvunp::sevenzip
