// The volume structure of a UDF image (ECMA-167 part 3): sector size,
// partitions, logical volumes, and the addresses that they give to extents.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "iso/bytesource.h"
#include "iso/udf.h"

namespace morvunp::iso {

class UdfVolumes {
 public:
  /// Reads the volume descriptor sequence and binds volumes to partitions.
  bool Open(ByteSource& source);
  /// Frees all records.
  void RemoveUDFAllItems();

  /// Bytes; every sector address counts in it.
  DWORD SectorSize() const { return m_nSectorSize; }
  std::vector<UDFVOLUME>& LogicalVolumes() { return m_arrLogicalVolumes; }

  /// True when PositionOf can be asked for this reference.
  bool HasPartition(int volume, int partitionReference) const;
  /// Byte position of an extent; none when it does not lie inside its
  /// partition. Throws CInvalidArgException when the volume, the partition
  /// reference or the partition does not exist.
  std::optional<ULONGLONG> PositionOf(int volume, int partitionReference, DWORD block,
                                      DWORD length) const;

  /// The bytes of an extent, fewer at the end of the image; none when it does
  /// not lie inside its partition or cannot be read. Throws as PositionOf.
  std::optional<std::vector<BYTE>> ReadExtent(ByteSource& source, int volume,
                                              int partitionReference, DWORD block,
                                              DWORD length) const;

 private:
  bool IsUDFSectorSize(ByteSource& source, DWORD size) const;
  bool ChooseSectorSize(ByteSource& source);
  bool ReadSequence(ByteSource& source, const UdfSequence& sequence);
  bool TakeDescriptor(std::span<const BYTE> sector);
  bool Bind();
  bool BindMap(UDFPARTMAP& map, int volume);

  DWORD m_nSectorSize = 0;
  std::vector<UDFPARTITION> m_arrPartitions;
  std::vector<UDFVOLUME> m_arrLogicalVolumes;
};

}  // namespace morvunp::iso
