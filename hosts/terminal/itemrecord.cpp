#include "itemrecord.h"

namespace terminal {

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
