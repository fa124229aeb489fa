// Whether an archive ends before it is complete.
//
// The engine takes the end of the file for the end of the archive, wherever it
// was cut. The blocks of both formats are published; they are walked here, but
// only where the file does not end with the block that ends an archive.
#pragma once

#include <string>
#include <vector>

#include "morvunp/rarunpacker.h"

namespace morvunp::rar {

/// Bytes of an encrypted header of an item at least, in either format.
inline constexpr ULONGLONG kLeastHiddenHeader = 48;

/// Of an archive, or of a set by the paths of its volumes in their order. Nothing
/// is found where the blocks are encrypted or a file cannot be read.
Gap FindGap(const std::vector<std::wstring>& volumes);

}  // namespace morvunp::rar
