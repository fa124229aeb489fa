#include "platform/cabinet/lzx.h"

#include <algorithm>
#include <cstring>

#include "platform/cabinet/littleendian.h"

namespace cabinet {
namespace {

constexpr std::size_t kLeastRoom = 8 * kBlockSize;
/// Matches are copied in steps that may reach this far behind their end.
constexpr std::size_t kStep = 16;
constexpr unsigned kShortestMatch = 2;
constexpr unsigned kLongLength = 7;
constexpr unsigned kAlignedBits = 3;
constexpr unsigned kRecentSlots = 3;

/// A slot stands for all distances from a base on that its extra bits reach.
struct Slot {
  DWORD base;
  unsigned extraBits;
};

constexpr std::size_t kSlots = 50;

constexpr std::array<Slot, kSlots> MakeSlots() {
  constexpr unsigned kMostExtraBits = 17;
  std::array<Slot, kSlots> slots{};
  DWORD base = 0;
  for (unsigned i = 0; i < kSlots; ++i) {
    const unsigned extra = i < 4 ? 0 : std::min(i / 2 - 1, kMostExtraBits);
    slots[i] = {base, extra};
    base += DWORD{1} << extra;
  }
  return slots;
}

constexpr std::array<Slot, kSlots> kSlotTable = MakeSlots();

/// Slots that it takes to reach the whole window.
unsigned SlotsOf(std::size_t window) {
  return static_cast<unsigned>(std::find_if(kSlotTable.begin(), kSlotTable.end(),
                                            [&](const Slot& slot) { return slot.base >= window; }) -
                               kSlotTable.begin());
}

/// Copies `length` bytes from `distance` back; may write up to kStep more.
void CopyMatch(BYTE* out, std::size_t distance, std::size_t length) {
  const BYTE* from = out - distance;
  BYTE* const end = out + length;
  if (distance >= kStep) {
    do {
      std::memcpy(out, from, kStep);
      out += kStep;
      from += kStep;
    } while (out < end);
  } else if (distance == 1) {
    std::memset(out, *from, length);
  } else {
    do {
      *out++ = *from++;
    } while (out < end);
  }
}

}  // namespace

LzxDecoder::LzxDecoder(const Host& host, unsigned windowBits)
    : m_nWindow(std::size_t{1} << windowBits),
      m_nMainSymbols(kLiterals + SlotsOf(m_nWindow) * kLengthHeaders),
      m_text(host, m_nWindow + std::max(m_nWindow, kLeastRoom) + kStep),
      m_pTextEnd(m_text.Get() + m_nWindow + std::max(m_nWindow, kLeastRoom)),
      m_pOut(m_text.Get() + m_nWindow),
      m_pReach(m_pOut),
      m_words(host, LzxInput::kWordsSize),
      m_translated(host, kBlockSize) {
  static_assert(kSlots == kMostSlots);
}

const BYTE* LzxDecoder::Decode(std::span<const BYTE> packed, std::size_t size) {
  if (packed.size() > LzxInput::kMostBytes) Fail(FDIERROR_MDI_FAIL);
  LzxInput input(packed, m_words.Get());
  MakeRoom(size);
  if (!m_bStarted) ReadStreamHeader(input.bits);
  BYTE* const frame = m_pOut;
  BYTE* const frameEnd = frame + size;
  while (m_pOut < frameEnd) {
    if (m_nBlockLeft == 0) ReadBlockHeader(input);
    const auto left = static_cast<std::size_t>(frameEnd - m_pOut);
    DecodeRun(input, m_pOut + std::min<std::size_t>(m_nBlockLeft, left));
  }
  if (input.bits.IsOverrun()) Fail(FDIERROR_MDI_FAIL);
  const BYTE* const result = Translate(frame, size);
  m_nPosition += size;
  return result;
}

/// Decodes what this frame has of the block in hand.
void LzxDecoder::DecodeRun(LzxInput& input, BYTE* end) {
  m_nBlockLeft -= static_cast<DWORD>(end - m_pOut);
  switch (m_kind) {
    case BlockKind::kVerbatim:
      m_pOut = DecodeMatches<false>(input.bits, m_pOut, end);
      break;
    case BlockKind::kAligned:
      m_pOut = DecodeMatches<true>(input.bits, m_pOut, end);
      break;
    default:
      m_pOut = CopyRaw(input, m_pOut, end);
  }
}

void LzxDecoder::MakeRoom(std::size_t size) {
  if (size <= static_cast<std::size_t>(m_pTextEnd - m_pOut)) return;
  BYTE* const kept = m_pOut - m_nWindow;
  const std::ptrdiff_t shift = kept - m_text.Get();
  std::memmove(m_text.Get(), kept, m_nWindow);
  m_pOut -= shift;
  m_pReach = m_pReach - m_text.Get() > shift ? m_pReach - shift : m_text.Get();
}

void LzxDecoder::ReadStreamHeader(BitReader& bits) {
  m_bStarted = true;
  if (bits.Read(1) == 0) return;
  const DWORD high = bits.Read(16);
  m_nTranslationSize = static_cast<LONG>(high << 16 | bits.Read(16));
}

void LzxDecoder::ReadBlockHeader(LzxInput& input) {
  if (m_bPaddingDue) {
    m_bPaddingDue = false;
    input.GoTo(input.BytePosition() + 1);
  }
  BitReader& bits = input.bits;
  m_kind = static_cast<BlockKind>(bits.Read(3));
  const DWORD high = bits.Read(16);
  m_nBlockLeft = high << 8 | bits.Read(8);
  if (m_nBlockLeft == 0) Fail(FDIERROR_MDI_FAIL);
  switch (m_kind) {
    case BlockKind::kAligned:
      if (!m_aligned.Build(ReadAlignedLengths(bits))) Fail(FDIERROR_MDI_FAIL);
      ReadCodes(bits);
      break;
    case BlockKind::kVerbatim:
      ReadCodes(bits);
      break;
    case BlockKind::kUncompressed:
      ReadRawStart(input);
      break;
    default:
      Fail(FDIERROR_MDI_FAIL);
  }
}

/// Three bits for each symbol.
auto LzxDecoder::ReadAlignedLengths(BitReader& bits) -> std::array<BYTE, kAlignedSymbols> {
  std::array<BYTE, kAlignedSymbols> lengths{};
  DWORD packed = bits.Read(12) << 12;
  packed |= bits.Read(12);
  for (auto length = lengths.rbegin(); length != lengths.rend(); ++length, packed >>= 3) {
    *length = packed & 7;
  }
  return lengths;
}

void LzxDecoder::ReadCodes(BitReader& bits) {
  const std::span<BYTE> lengths = std::span(m_mainLengths).first(m_nMainSymbols);
  ReadLengths(bits, lengths.first(kLiterals));
  ReadLengths(bits, lengths.subspan(kLiterals));
  ReadLengths(bits, m_lengthLengths);
  if (!m_main.Build(lengths) || !m_lengths.Build(m_lengthLengths)) Fail(FDIERROR_MDI_FAIL);
}

/// The lengths of a code follow each other, packed by a small code of their
/// own, as differences to the lengths of the block before.
void LzxDecoder::ReadLengths(BitReader& bits, std::span<BYTE> lengths) {
  constexpr unsigned kShortZeros = 17;
  constexpr unsigned kLongZeros = 18;
  constexpr unsigned kSame = 19;
  constexpr unsigned kRange = 17;
  std::array<BYTE, 20> preLengths{};
  for (BYTE& length : preLengths) length = static_cast<BYTE>(bits.Read(4));
  HuffmanCode<20, 6> pre;
  if (!pre.Build(preLengths)) Fail(FDIERROR_MDI_FAIL);
  for (std::size_t i = 0; i < lengths.size();) {
    bits.Refill();
    unsigned code = pre.Decode(bits);
    std::size_t run = 1;
    BYTE length = 0;
    if (code == kShortZeros) {
      run = 4 + bits.Take(4);
    } else if (code == kLongZeros) {
      run = 20 + bits.Take(5);
    } else {
      if (code == kSame) {
        run = 4 + bits.Take(1);
        code = pre.Decode(bits);
      }
      if (code >= kRange) Fail(FDIERROR_MDI_FAIL);
      length = static_cast<BYTE>((kRange + lengths[i] - code) % kRange);
    }
    if (run > lengths.size() - i) Fail(FDIERROR_MDI_FAIL);
    std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(i), run, length);
    i += run;
  }
}

/// Behind the header of an uncompressed block come 1 to 16 bits of padding,
/// the three recent distances, and the bytes as they are.
void LzxDecoder::ReadRawStart(LzxInput& input) {
  constexpr std::size_t kRecentSize = 12;
  const auto bytes = input.Bytes();
  const std::size_t start = input.BytePosition() + 2 - input.bits.Position() / 8 % 2;
  if (start + kRecentSize > bytes.size()) Fail(FDIERROR_MDI_FAIL);
  for (std::size_t i = 0; i < m_arrRecent.size(); ++i) {
    m_arrRecent[i] = DwordAt(bytes.data() + start + 4 * i);
  }
  input.GoTo(start + kRecentSize);
  m_bPaddingDue = m_nBlockLeft % 2 != 0;
}

template <bool kIsAligned>
BYTE* LzxDecoder::DecodeMatches(BitReader& shared, BYTE* out, const BYTE* end) {
  // Copies of their own stay in registers: a byte written could be any member.
  BitReader bits = shared;
  RecentDistances recent = m_arrRecent;
  const unsigned mainSymbols = m_nMainSymbols;
  while (out < end) {
    bits.Refill();
    unsigned symbol = m_main.Decode(bits);
    if (symbol < kLiterals) {
      *out++ = static_cast<BYTE>(symbol);
      if (out == end) break;
      // What is left of the refill holds one more symbol.
      symbol = m_main.Decode(bits);
      if (symbol < kLiterals) {
        *out++ = static_cast<BYTE>(symbol);
        continue;
      }
      bits.Refill();
    }
    if (symbol >= mainSymbols) Fail(FDIERROR_MDI_FAIL);
    std::size_t length = (symbol - kLiterals) % kLengthHeaders;
    if (length == kLongLength) length += m_lengths.Decode(bits);
    length += kShortestMatch;
    const std::size_t distance =
        ReadDistance<kIsAligned>(bits, (symbol - kLiterals) / kLengthHeaders, recent);
    if (length > static_cast<std::size_t>(end - out)) Fail(FDIERROR_MDI_FAIL);
    // A distance of 0 becomes the largest of all.
    if (distance - 1 >= static_cast<std::size_t>(out - m_pReach)) [[unlikely]]
      Reach(distance, out);
    CopyMatch(out, distance, length);
    out += length;
  }
  m_arrRecent = recent;
  shared = bits;
  return out;
}

template <bool kIsAligned>
std::size_t LzxDecoder::ReadDistance(BitReader& bits, unsigned slot,
                                     RecentDistances& recent) const {
  if (slot < kRecentSlots) {
    std::swap(recent[0], recent[slot]);
    return recent[0];
  }
  const auto [base, extraBits] = kSlotTable[slot];
  DWORD distance = base - (kRecentSlots - 1);
  if (kIsAligned && extraBits >= kAlignedBits) {
    distance += bits.Take(extraBits - kAlignedBits) << kAlignedBits;
    distance += m_aligned.Decode(bits);
  } else {
    distance += bits.Take(extraBits);
  }
  recent = {distance, recent[0], recent[1]};
  return distance;
}

BYTE* LzxDecoder::CopyRaw(LzxInput& input, BYTE* out, BYTE* end) {
  const auto bytes = input.Bytes();
  const std::size_t start = input.BytePosition();
  const auto length = static_cast<std::size_t>(end - out);
  if (start > bytes.size() || length > bytes.size() - start) Fail(FDIERROR_MDI_FAIL);
  std::memcpy(out, bytes.data() + start, length);
  input.GoTo(start + length);
  // The padding may lie at the end of this block or at the start of the next.
  if (m_nBlockLeft == 0 && start + length + 1 == bytes.size()) m_bPaddingDue = false;
  return end;
}

/// A match may reach into the part of the window that nothing was written to:
/// it begins as zeros.
void LzxDecoder::Reach(std::size_t distance, const BYTE* out) {
  if (distance == 0 || distance > m_nWindow) Fail(FDIERROR_MDI_FAIL);
  if (distance <= static_cast<std::size_t>(out - m_pReach)) return;
  std::memset(m_text.Get(), 0, static_cast<std::size_t>(m_pReach - m_text.Get()));
  m_pReach = m_text.Get();
}

/// Writers make calls in machine code of x86 repeat themselves by giving their
/// targets as places in the folder; here they become distances again.
const BYTE* LzxDecoder::Translate(const BYTE* frame, std::size_t size) {
  constexpr BYTE kCall = 0xE8;
  constexpr std::size_t kUntouchedEnd = 10;
  constexpr std::uint64_t kTranslatedStart = std::uint64_t{kBlockSize} * kBlockSize;
  if (m_nTranslationSize == 0 || size <= kUntouchedEnd || m_nPosition >= kTranslatedStart) {
    return frame;
  }
  BYTE* const code = m_translated.Get();
  std::memcpy(code, frame, size);
  const std::size_t end = size - kUntouchedEnd;
  for (std::size_t i = 0; i < end;) {
    const auto* const call = static_cast<const BYTE*>(std::memchr(code + i, kCall, end - i));
    if (call == nullptr) break;
    i = static_cast<std::size_t>(call - code);
    const auto place = static_cast<LONG>(m_nPosition + i);
    const auto target = static_cast<LONG>(DwordAt(call + 1));
    if (target >= -place && target < m_nTranslationSize) {
      const auto shift = static_cast<DWORD>(target >= 0 ? -place : m_nTranslationSize);
      const DWORD distance = static_cast<DWORD>(target) + shift;
      std::memcpy(code + i + 1, &distance, sizeof distance);
    }
    i += 5;
  }
  return code;
}

}  // namespace cabinet
