// What the beginning of a 7z archive says of its length.
#pragma once

#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// True when the stream begins as an archive and ends before that archive does.
/// The stream stands anywhere afterwards.
bool EndsBeforeArchive(IInStream& stream);

}  // namespace morvunp::sevenzip
