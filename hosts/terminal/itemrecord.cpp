#include "itemrecord.h"

namespace terminal {

Item ItemOf(const CABFILEFULLINFO& record) {
  const auto size = static_cast<std::uint32_t>(record.nSize);
  return {.path = record.strPath,
          .name = record.strName,
          .isFolder = record.bFolder != 0,
          .isHidden = (record.nAttribs & FILE_ATTRIBUTE_HIDDEN) != 0,
          .size = size,
          // Cabinets record packed sizes of whole folders only.
          .packedSize = size,
          .modified = platform::TimeOfDosDateTime(record.nDate, record.nTime),
          .accessed = 0};
}

Item ItemOf(const ISOFILEFULLINFO& record) {
  const std::uint64_t size = record.nSize != 0 ? record.nSize : record.nSize64;
  return {.path = record.strPath,
          .name = record.strName,
          .isFolder = record.bFolder != 0,
          .isHidden = record.bHidden != 0,
          .size = size,
          .packedSize = record.nPackedSize != 0 ? record.nPackedSize : size,
          .modified = record.timeModified,
          .accessed = record.timeAccessed};
}

}  // namespace terminal
