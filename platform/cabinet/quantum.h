// Quantum, through libmspack.
#pragma once

#include <mspack.h>

#include "platform/cabinet/decoder.h"

namespace cabinet {

/// libmspack unpacks Quantum only from whole cabinets, so it is shown one: a
/// cabinet of one folder and one file that exists nowhere, whose data blocks
/// are those that Decode is given. Each call moves its file on by a block.
class QuantumDecoder final : public Decoder {
 public:
  static constexpr unsigned kSmallestWindowBits = 10;

  QuantumDecoder(const Host& host, WORD compression);
  ~QuantumDecoder() override;
  QuantumDecoder(const QuantumDecoder&) = delete;
  QuantumDecoder& operator=(const QuantumDecoder&) = delete;

  const BYTE* Decode(std::span<const BYTE> packed, std::size_t size) override;

 private:
  /// What libmspack is given as its system.
  struct System : mspack_system {
    QuantumDecoder* decoder;
  };
  /// An open file of that system.
  struct Stream : mspack_file {
    QuantumDecoder* decoder;
    bool isOutput;
    std::uint64_t position;
  };

  void PutBlock(std::span<const BYTE> packed, std::size_t size);

  static mspack_file* Open(mspack_system* self, const char* name, int mode);
  static void Close(mspack_file* file);
  static int Read(mspack_file* file, void* buffer, int count);
  static int Write(mspack_file* file, void* buffer, int count);
  static int Seek(mspack_file* file, off_t offset, int origin);
  static off_t Tell(mspack_file* file);
  static void Message(mspack_file*, const char*, ...) {}
  static void* Allocate(mspack_system* self, std::size_t size);
  static void Free(void* memory);
  static void Copy(void* from, void* to, std::size_t size);

  const Host& m_host;
  WORD m_nCompression;
  System m_system;
  mscab_decompressor* m_pEngine;
  mscabd_cabinet* m_pCabinet = nullptr;
  /// The block in hand, as it lies in the cabinet.
  Memory m_block;
  std::size_t m_nBlockSize = 0;
  unsigned m_nBlocks = 0;
  /// Where in the cabinet it lies.
  std::uint64_t m_nBlockOffset;
  Memory m_output;
  std::size_t m_nOutput = 0;
};

}  // namespace cabinet
