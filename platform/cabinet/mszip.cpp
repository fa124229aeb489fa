#include "platform/cabinet/mszip.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace cabinet {
namespace {

constexpr std::size_t kSignatureSize = 2;
constexpr std::size_t kHistorySize = kBlockSize;
/// RFC 1951, 3.2.4: three bits of block header, length and its complement.
constexpr std::size_t kStoredHeaderSize = 5;
/// A stored block's header, history, new bytes, and the packed bytes that are
/// to follow them.
constexpr std::size_t kAreaSize = kStoredHeaderSize + kHistorySize + kBlockSize + kMostPacked;

void PutStoredHeader(BYTE* header, std::size_t length) {
  header[0] = 0;
  header[1] = static_cast<BYTE>(length);
  header[2] = static_cast<BYTE>(length >> 8);
  header[3] = static_cast<BYTE>(~header[1]);
  header[4] = static_cast<BYTE>(~header[2]);
}

void* AllocForZlib(void* host, uInt items, uInt size) {
  return static_cast<const Host*>(host)->alloc(std::size_t{items} * size);
}

void FreeForZlib(void* host, void* memory) { static_cast<const Host*>(host)->free(memory); }

}  // namespace

MszipDecoder::MszipDecoder(const Host& host)
    : m_host(host),
      m_areas(host, 2 * kAreaSize),
      m_pDecompressor(libdeflate_alloc_decompressor()),
      m_pFree(m_areas.Get()),
      m_history{m_areas.Get() + kAreaSize + kStoredHeaderSize, 0} {
  if (m_pDecompressor == nullptr) Fail(FDIERROR_ALLOC_FAIL);
}

MszipDecoder::~MszipDecoder() { libdeflate_free_decompressor(m_pDecompressor); }

const BYTE* MszipDecoder::Decode(std::span<const BYTE> packed, std::size_t size) {
  const bool isSigned = packed.size() >= kSignatureSize && packed[0] == 'C' && packed[1] == 'K';
  if (!isSigned || packed.size() > kMostPacked) Fail(FDIERROR_MDI_FAIL);
  const auto deflated = packed.subspan(kSignatureSize);
  BYTE* const out = m_pFree + kStoredHeaderSize;
  if (!Inflate(deflated, m_history, out, size) && !InflateSlowly(deflated, m_history, out, size)) {
    Fail(FDIERROR_MDI_FAIL);
  }
  BYTE* const fresh = out + m_history.size;
  const std::size_t kept = std::min(m_history.size + size, kHistorySize);
  m_pFree = m_pFree == m_areas.Get() ? m_areas.Get() + kAreaSize : m_areas.Get();
  m_history = {fresh + size - kept, kept};
  return fresh;
}

bool MszipDecoder::Inflate(std::span<const BYTE> deflated, Text history, BYTE* out,
                           std::size_t size) {
  const BYTE* in = deflated.data();
  std::size_t inSize = deflated.size();
  if (history.size > 0) {
    PutStoredHeader(history.begin - kStoredHeaderSize, history.size);
    std::memcpy(history.begin + history.size, deflated.data(), deflated.size());
    in = history.begin - kStoredHeaderSize;
    inSize += kStoredHeaderSize + history.size;
  }
  std::size_t made = 0;
  const libdeflate_result result =
      libdeflate_deflate_decompress(m_pDecompressor, in, inSize, out, history.size + size, &made);
  return result == LIBDEFLATE_SUCCESS && made == history.size + size;
}

bool MszipDecoder::InflateSlowly(std::span<const BYTE> deflated, Text history, BYTE* out,
                                 std::size_t size) {
  z_stream stream{};
  stream.zalloc = AllocForZlib;
  stream.zfree = FreeForZlib;
  stream.opaque = const_cast<Host*>(&m_host);
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) Fail(FDIERROR_ALLOC_FAIL);
  std::memcpy(out, history.begin, history.size);
  inflateSetDictionary(&stream, out, static_cast<uInt>(history.size));
  stream.next_in = const_cast<BYTE*>(deflated.data());
  stream.avail_in = static_cast<uInt>(deflated.size());
  stream.next_out = out + history.size;
  stream.avail_out = static_cast<uInt>(size);
  const int result = inflate(&stream, Z_SYNC_FLUSH);
  inflateEnd(&stream);
  return (result == Z_OK || result == Z_STREAM_END) && stream.avail_out == 0;
}

}  // namespace cabinet
