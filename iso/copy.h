// Copying file data from an image to a file on disk.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "iso/bytesource.h"
#include "morvunp/unpackstate.h"
#include "output/root.h"

namespace morvunp::iso {

enum class CopyResult { kDone, kFailed, kCancelled };

/// The 256 KiB through which data moves. Small files that lie close together
/// in the image share one read.
class CopyBuffer {
 public:
  static constexpr std::uint32_t kCapacity = 262144;

  /// Up to `length` bytes at `offset`, at most kCapacity; fewer at the end of
  /// the source. None on a read error. Valid until the next call.
  std::optional<std::span<const BYTE>> Read(ByteSource& source, std::uint64_t offset,
                                            std::uint64_t length);
  /// Keeps the memory while it lives, so that the files of a run share it.
  class Lease {
   public:
    explicit Lease(CopyBuffer& buffer) : m_buffer(buffer) { ++m_buffer.m_nLeases; }
    ~Lease() {
      if (--m_buffer.m_nLeases == 0) std::vector<BYTE>().swap(m_buffer.m_bytes);
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

   private:
    CopyBuffer& m_buffer;
  };

 private:
  bool Fill(ByteSource& source, std::uint64_t offset, std::uint32_t length);

  std::vector<BYTE> m_bytes;
  std::uint64_t m_nOffset = 0;
  std::uint32_t m_nLength = 0;
  int m_nLeases = 0;
};

/// The file being written: writes, reports progress after each block, pumps
/// messages and asks when the user wants to stop.
class OutputFile {
 public:
  OutputFile(output::Root& root, CUnpackState& state, ULONGLONG total)
      : m_root(root), m_state(state), m_nTotal(total) {}

  CopyResult Write(std::span<const BYTE> block);
  /// Writes data that is one block by nature: reports, but pumps no messages.
  CopyResult WriteAtOnce(std::span<const BYTE> data);
  /// Leaves a hole of zeros, which costs nothing whatever its length.
  CopyResult Skip(std::uint64_t length);
  /// Ends the file where the writing ended, also behind a hole.
  CopyResult Finish();

  /// Bytes that the file does not have yet.
  std::uint64_t Remaining() const { return m_nTotal - m_nDone; }
  /// The image cannot be read on; tells why.
  CopyResult FailToRead();
  /// The image ends here, before the file does.
  void EndEarly() { m_bCutShort = true; }
  /// What is wrong with a copy that counts as done.
  morvunp::ItemReason Defect() const;

 private:
  bool WriteBytes(std::span<const BYTE> bytes);

  output::Root& m_root;
  CUnpackState& m_state;
  ULONGLONG m_nTotal;
  ULONGLONG m_nDone = 0;
  bool m_bEndsInHole = false;
  bool m_bCutShort = false;
};

/// Copies `length` bytes at `offset` of the image. Where the image ends early
/// the output does too, and counts as done.
CopyResult CopyExtent(ByteSource& source, CopyBuffer& buffer, std::uint64_t offset,
                      std::uint64_t length, OutputFile& output);

}  // namespace morvunp::iso
