// The unpacked data of a cabinet's folders, and of those that go on in the
// next cabinets of a set.
#pragma once

#include <bitset>
#include <limits>
#include <optional>

#include "platform/cabinet/decoder.h"

namespace cabinet {

/// A cabinet that is open for its data.
struct Volume {
  Volume(const Host& host, const char* folder, const char* name)
      : reader(host, folder, name), header(ReadHeader(reader)) {}

  Reader reader;
  Header header;
};

/// Where a data stream gets its cabinets from.
class VolumeSource {
 public:
  virtual ~VolumeSource() = default;
  /// The cabinet in which a folder of the pass's own cabinet begins; `folder`
  /// becomes its index there.
  virtual Owned<Volume> First(WORD& folder) = 0;
  /// True for a cabinet that comes before the pass's own.
  virtual bool IsEarlier(const Volume& volume) const = 0;
  /// The cabinet that follows.
  virtual Owned<Volume> Next(const Volume& current) = 0;
};

class DataStream {
 public:
  DataStream(const Host& host, VolumeSource& source) : m_host(host), m_source(source) {}

  /// Goes to the first byte of a file of the pass's own cabinet. `folder` is
  /// the file's folder there; the data may run into the next cabinet only when
  /// the file is recorded to do so.
  void GoTo(WORD folder, const File& file);
  /// The next bytes, as far as they are unpacked; never empty. At most
  /// kBlockSize.
  std::span<const BYTE> Bytes();
  void Drop(std::size_t length) { m_nTaken += length; }

  /// The pass goes on with the table of the next cabinet. `continued`: its first
  /// folder is that one of the table before.
  void EnterTable(std::optional<WORD> continued);
  /// The folder's data cannot be had; its files fail at once from here on.
  void Abandon(WORD folder, FDIERROR error);

  /// True once the data has run into another cabinet.
  bool HasMoved() const { return m_bMoved; }

 private:
  void NoteRepetition(WORD folder);
  void Begin(WORD folder);
  void Advance();
  std::span<const BYTE> ReadPacked(WORD& size);
  Block NextBlock();
  void Join(Block block);
  void GoToNextVolume();

  const Host& m_host;
  VolumeSource& m_source;
  Owned<Volume> m_pVolume;
  /// That is certainly the pass's own cabinet.
  bool m_bAtHome = false;
  bool m_bMoved = false;
  bool m_bMayMove = false;
  /// The folder's index in the pass's own cabinet; none before the first.
  std::optional<WORD> m_nFolder;
  /// Its index in the cabinet that is being read.
  WORD m_nFolderHere = 0;
  Folder m_folder{};
  Owned<Decoder> m_pDecoder;
  /// The block that is unpacked, where it begins, and what was taken of it.
  std::span<const BYTE> m_block;
  std::uint64_t m_nBlockOffset = 0;
  std::size_t m_nTaken = 0;
  /// A packed block that came in pieces.
  std::optional<Memory> m_joined;
  std::size_t m_nJoined = 0;
  /// The folders that were begun, and how many bytes of the one in hand had
  /// been unpacked before.
  std::bitset<std::numeric_limits<WORD>::max() + 1> m_begun;
  std::uint64_t m_nKnown = 0;
  /// Those whose data cannot be had, and why that of the last one cannot.
  std::bitset<std::numeric_limits<WORD>::max() + 1> m_abandoned;
  FDIERROR m_abandonedFor = FDIERROR_NONE;
  /// Blocks that were unpacked again because files do not follow each other.
  std::uint64_t m_nRepeatedBlocks = 0;
};

}  // namespace cabinet
