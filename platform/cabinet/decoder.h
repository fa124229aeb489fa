// Unpacking the data of a folder, block by block.
#pragma once

#include "platform/cabinet/container.h"

namespace cabinet {

/// Unpacks the blocks of one folder in their order.
class Decoder {
 public:
  virtual ~Decoder() = default;
  /// Unpacks a block to exactly `size` bytes, at most kBlockSize. The result
  /// is valid until the next call, and no longer than `packed`. Fails with
  /// FDIERROR_MDI_FAIL.
  virtual const BYTE* Decode(std::span<const BYTE> packed, std::size_t size) = 0;
};

/// The decoder for a value of Folder::compression, at the start of the folder.
/// `host` must outlive it.
Owned<Decoder> MakeDecoder(const Host& host, WORD compression);

}  // namespace cabinet
