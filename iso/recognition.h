// Which of the two file systems an image is read as.
#pragma once

#include <optional>
#include <string>

#include "iso/bytesource.h"
#include "iso/iso9660.h"

namespace morvunp::iso {

enum class FileSystem { kNone, kISO9660, kUDF };

/// UDF when the volume recognition sequence (ECMA-167 2/8) names it, else ISO
/// 9660 when a primary volume descriptor stands at any 2048-byte boundary.
FileSystem RecogniseFileSystem(ByteSource& source);

/// The five characters of a volume structure descriptor (ECMA-167 2/9.1.2).
std::wstring GetStandardIdentifier(const BYTE* block);

/// The first primary volume descriptor, searched from the start of the file.
std::optional<PrimaryVolumeDescriptor> FindPrimaryVolumeDescriptor(ByteSource& source);

}  // namespace morvunp::iso
