#include "platform/cabinet/quantum.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace cabinet {
namespace {

constexpr int kEngineBuffer = 64;

constexpr BYTE Low(unsigned value) { return static_cast<BYTE>(value); }
constexpr BYTE High(unsigned value) { return static_cast<BYTE>(value >> 8); }

// CFHEADER, CFFOLDER and CFFILE of the cabinet that libmspack sees.
constexpr std::size_t kStartSize = 36 + 8 + 18;

std::array<BYTE, kStartSize> MakeStart(WORD compression) {
  constexpr unsigned kFilesOffset = 44;
  return {'M', 'S', 'C', 'F', 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 0, 0, 0, 0, kFilesOffset, 0, 0, 0,
          0, 0, 0, 0, 3, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0,
          // The folder: where its blocks begin, how many, the method.
          kStartSize, 0, 0, 0, 0xFF, 0xFF, Low(compression), High(compression),
          // The file: size and offset, set anew for each block, and its name.
          1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x21, 0, 0, 0, 0, 0, 'x', 0};
}

/// The host whose memory is asked for: libmspack hands a system of its own
/// making to the function that allocates.
thread_local const Host* allocating = nullptr;

}  // namespace

QuantumDecoder::QuantumDecoder(const Host& host, WORD compression)
    : m_host(host),
      m_nCompression(compression),
      m_system{{Open, Close, Read, Write, Seek, Tell, Message, Allocate, Free, Copy, nullptr},
               this},
      m_block(host, kBlockHeaderSize + kMostPacked),
      m_nBlockOffset(kStartSize),
      m_output(host, kBlockSize) {
  allocating = &host;
  m_pEngine = mspack_create_cab_decompressor(&m_system);
  if (m_pEngine == nullptr) Fail(FDIERROR_ALLOC_FAIL);
  m_pEngine->set_param(m_pEngine, MSCABD_PARAM_DECOMPBUF, kEngineBuffer);
  // Of the cabinet around the data, which is no real one, everything will do.
  m_pEngine->set_param(m_pEngine, MSCABD_PARAM_SALVAGE, 1);
  m_pCabinet = m_pEngine->open(m_pEngine, "");
  if (m_pCabinet != nullptr) return;
  mspack_destroy_cab_decompressor(m_pEngine);
  Fail(FDIERROR_ALLOC_FAIL);
}

QuantumDecoder::~QuantumDecoder() {
  m_pEngine->close(m_pEngine, m_pCabinet);
  mspack_destroy_cab_decompressor(m_pEngine);
}

const BYTE* QuantumDecoder::Decode(std::span<const BYTE> packed, std::size_t size) {
  m_nBlockOffset += m_nBlockSize;
  PutBlock(packed, size);
  mscabd_file* const file = m_pCabinet->files;
  if (m_nOutput != 0) file->offset += static_cast<unsigned>(m_nOutput);
  file->length = static_cast<unsigned>(size);
  m_nOutput = 0;
  allocating = &m_host;
  const int error = m_pEngine->extract(m_pEngine, file, "");
  if (error == MSPACK_ERR_NOMEMORY) Fail(FDIERROR_ALLOC_FAIL);
  if (error != MSPACK_ERR_OK || m_nOutput != size) Fail(FDIERROR_MDI_FAIL);
  return m_output.Get();
}

/// Makes the block a CFDATA record without a checksum. libmspack adds a byte
/// that ends the block, and fills its buffer before it looks at what it got;
/// bytes in front of that end, which it passes over, keep it from wanting the
/// next block before this one is done.
void QuantumDecoder::PutBlock(std::span<const BYTE> packed, std::size_t size) {
  if (packed.size() > kMostPacked) Fail(FDIERROR_MDI_FAIL);
  const std::size_t filled = (packed.size() / kEngineBuffer + 1) * kEngineBuffer - 1;
  const auto padded = static_cast<unsigned>(filled <= kMostPacked ? filled : packed.size());
  const auto unpacked = static_cast<unsigned>(size);
  const std::array<BYTE, kBlockHeaderSize> header{
      0, 0, 0, 0, Low(padded), High(padded), Low(unpacked), High(unpacked)};
  BYTE* const block = m_block.Get();
  std::copy(header.begin(), header.end(), block);
  BYTE* const end = std::copy(packed.begin(), packed.end(), block + kBlockHeaderSize);
  std::fill(end, block + kBlockHeaderSize + padded, BYTE{0});
  m_nBlockSize = kBlockHeaderSize + padded;
  // As far as libmspack knows, this block is the last.
  m_pCabinet->folders->num_blocks = ++m_nBlocks;
}

mspack_file* QuantumDecoder::Open(mspack_system* self, const char*, int mode) {
  auto* const memory = static_cast<Stream*>(Allocate(self, sizeof(Stream)));
  if (memory == nullptr) return nullptr;
  return new (memory)
      Stream{{}, static_cast<System*>(self)->decoder, mode != MSPACK_SYS_OPEN_READ, 0};
}

void QuantumDecoder::Close(mspack_file* file) { Free(file); }

int QuantumDecoder::Read(mspack_file* file, void* buffer, int count) {
  auto& stream = *static_cast<Stream*>(file);
  QuantumDecoder& decoder = *stream.decoder;
  const std::array<BYTE, kStartSize> start = MakeStart(decoder.m_nCompression);
  const bool inStart = stream.position < kStartSize;
  const BYTE* const bytes = inStart ? start.data() : decoder.m_block.Get();
  const std::uint64_t first = inStart ? 0 : decoder.m_nBlockOffset;
  const std::uint64_t end = first + (inStart ? kStartSize : decoder.m_nBlockSize);
  if (stream.position < first || stream.position >= end) return 0;
  const auto length = std::min(static_cast<std::uint64_t>(count), end - stream.position);
  std::memcpy(buffer, bytes + (stream.position - first), length);
  stream.position += length;
  return static_cast<int>(length);
}

int QuantumDecoder::Write(mspack_file* file, void* buffer, int count) {
  auto& stream = *static_cast<Stream*>(file);
  QuantumDecoder& decoder = *stream.decoder;
  const auto length = static_cast<std::size_t>(count);
  if (!stream.isOutput || length > kBlockSize - decoder.m_nOutput) return -1;
  std::memcpy(decoder.m_output.Get() + decoder.m_nOutput, buffer, length);
  decoder.m_nOutput += length;
  return count;
}

int QuantumDecoder::Seek(mspack_file* file, off_t offset, int origin) {
  auto& stream = *static_cast<Stream*>(file);
  if (origin == MSPACK_SYS_SEEK_END) return -1;
  const off_t base = origin == MSPACK_SYS_SEEK_CUR ? static_cast<off_t>(stream.position) : 0;
  if (base + offset < 0) return -1;
  stream.position = static_cast<std::uint64_t>(base + offset);
  return 0;
}

off_t QuantumDecoder::Tell(mspack_file* file) {
  return static_cast<off_t>(static_cast<Stream*>(file)->position);
}

// Free is not told the system, so every piece of memory begins with the
// function that takes it back.
void* QuantumDecoder::Allocate(mspack_system*, std::size_t size) {
  constexpr std::size_t kBefore = alignof(std::max_align_t);
  auto* const memory = static_cast<BYTE*>(allocating->alloc(size + kBefore));
  if (memory == nullptr) return nullptr;
  std::memcpy(memory, &allocating->free, sizeof allocating->free);
  return memory + kBefore;
}

void QuantumDecoder::Free(void* memory) {
  if (memory == nullptr) return;
  auto* const start = static_cast<BYTE*>(memory) - alignof(std::max_align_t);
  PFNFREE free = nullptr;
  std::memcpy(&free, start, sizeof free);
  free(start);
}

void QuantumDecoder::Copy(void* from, void* to, std::size_t size) { std::memcpy(to, from, size); }

}  // namespace cabinet
