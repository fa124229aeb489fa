// MSZIP: deflate (RFC 1951) in blocks that share their history.
#pragma once

#include "platform/cabinet/decoder.h"

struct libdeflate_decompressor;

namespace cabinet {

/// libdeflate does the work: it knows no history between calls, so the history
/// goes in front of each block as a stored block of its own and comes out in
/// front of the new bytes, where it serves the next block. Two areas take
/// turns, so that nothing but packed data is moved.
class MszipDecoder final : public Decoder {
 public:
  explicit MszipDecoder(const Host& host);
  ~MszipDecoder() override;
  MszipDecoder(const MszipDecoder&) = delete;
  MszipDecoder& operator=(const MszipDecoder&) = delete;

  const BYTE* Decode(std::span<const BYTE> packed, std::size_t size) override;

 private:
  /// Bytes that came out before, at the end of one area.
  struct Text {
    BYTE* begin;
    std::size_t size;
  };

  bool Inflate(std::span<const BYTE> deflated, Text history, BYTE* out, std::size_t size);
  bool InflateSlowly(std::span<const BYTE> deflated, Text history, BYTE* out, std::size_t size);

  const Host& m_host;
  Memory m_areas;
  libdeflate_decompressor* m_pDecompressor;
  /// The area that the last block did not go to.
  BYTE* m_pFree;
  Text m_history;
};

}  // namespace cabinet
