#include "platform/cabinet/decoder.h"

#include "platform/cabinet/lzx.h"
#include "platform/cabinet/mszip.h"
#include "platform/cabinet/quantum.h"

namespace cabinet {
namespace {

enum Method { kStored, kMszip, kQuantum, kLzx };

class StoredDecoder final : public Decoder {
 public:
  const BYTE* Decode(std::span<const BYTE> packed, std::size_t size) override {
    if (packed.size() != size) Fail(FDIERROR_MDI_FAIL);
    return packed.data();
  }
};

/// Window sizes are powers of two, their exponent in bits 8 to 12.
unsigned WindowBits(WORD compression, unsigned smallest) {
  constexpr unsigned kLargest = 21;
  const unsigned bits = compression >> 8 & 0x1F;
  if (bits < smallest || bits > kLargest) Fail(FDIERROR_BAD_COMPR_TYPE);
  return bits;
}

}  // namespace

Owned<Decoder> MakeDecoder(const Host& host, WORD compression) {
  switch (compression & 0x0F) {
    case kStored:
      return Make<Decoder, StoredDecoder>(host);
    case kMszip:
      return Make<Decoder, MszipDecoder>(host, host);
    case kQuantum:
      WindowBits(compression, QuantumDecoder::kSmallestWindowBits);
      return Make<Decoder, QuantumDecoder>(host, host, compression);
    case kLzx:
      return Make<Decoder, LzxDecoder>(host, host,
                                       WindowBits(compression, LzxDecoder::kSmallestWindowBits));
    default:
      Fail(FDIERROR_BAD_COMPR_TYPE);
  }
}

}  // namespace cabinet
