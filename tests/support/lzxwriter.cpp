#include "support/lzxwriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>

#include "support/bytes.h"

namespace testsupport {
namespace {

constexpr std::size_t kFrame = 32768;
constexpr unsigned kLongestCode = 16;
constexpr std::size_t kLongestMatch = 257;
constexpr unsigned kLiterals = 256;

/// 16-bit little-endian words, filled from their most significant bit.
class Bits {
 public:
  void Put(std::uint32_t value, unsigned count) {
    while (count-- > 0) {
      m_nWord = m_nWord << 1 | (value >> count & 1);
      if (++m_nFilled < 16) continue;
      bytes += Little(m_nWord, 2);
      m_nWord = m_nFilled = 0;
    }
  }
  bool IsAligned() const { return m_nFilled == 0; }
  /// Between 1 and 16 bits, to the next word.
  void Pad() { Put(0, 16 - m_nFilled); }

  std::string bytes;

 private:
  std::uint32_t m_nWord = 0;
  unsigned m_nFilled = 0;
};

using Lengths = std::vector<std::uint8_t>;
using Counts = std::vector<std::uint32_t>;

/// Huffman's lengths for symbols that come this often. The rarest two groups
/// of symbols join, and each of them gets a bit, until one group is left.
Lengths LengthsFor(Counts counts) {
  std::multimap<std::uint64_t, std::vector<std::size_t>> groups;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    // Two at least: some readers want a code without gaps.
    if (counts[i] != 0 || i < 2) groups.emplace(counts[i], std::vector{i});
  }
  Lengths lengths(counts.size());
  while (groups.size() > 1) {
    auto group = groups.extract(groups.begin());
    const auto other = groups.extract(groups.begin());
    group.key() += other.key();
    group.mapped().insert(group.mapped().end(), other.mapped().begin(), other.mapped().end());
    for (const std::size_t symbol : group.mapped()) ++lengths[symbol];
    groups.insert(std::move(group));
  }
  if (*std::max_element(lengths.begin(), lengths.end()) <= kLongestCode) return lengths;
  for (std::uint32_t& count : counts) count = (count + 1) / 2;
  return LengthsFor(std::move(counts));
}

/// A canonical code.
class Code {
 public:
  explicit Code(const Lengths& lengths) : m_lengths(lengths), m_values(lengths.size()) {
    std::uint32_t value = 0;
    for (unsigned length = 1; length <= kLongestCode; ++length, value <<= 1) {
      for (std::size_t i = 0; i < lengths.size(); ++i) {
        if (lengths[i] == length) m_values[i] = value++;
      }
    }
  }
  void Put(Bits& bits, std::size_t symbol) const { bits.Put(m_values[symbol], m_lengths[symbol]); }

 private:
  Lengths m_lengths;
  Counts m_values;
};

/// A literal, or a match by its length and where it comes from.
struct Token {
  std::size_t symbol = 0;
  std::uint32_t extra = 0;
  unsigned extraBits = 0;
  /// What the symbol leaves of a long length; none below 0.
  int lengthSymbol = -1;
  std::size_t end = 0;
};

/// Distances from a base on that its extra bits reach.
struct Slot {
  std::size_t index = 0;
  std::uint32_t base = 0;
  unsigned extraBits = 0;
};

Slot SlotOf(std::uint32_t distance) {
  Slot slot;
  while (distance - slot.base >= 1U << slot.extraBits) {
    slot.base += 1U << slot.extraBits;
    const auto index = static_cast<unsigned>(++slot.index);
    slot.extraBits = index < 4 ? 0 : std::min(index / 2 - 1, 17U);
  }
  return slot;
}

class Writer {
 public:
  Writer(std::string data, const LzxSettings& settings)
      : m_data(std::move(data)), m_settings(settings), m_nWindow(1U << settings.windowBits) {}

  std::vector<std::string> Write() {
    const auto size = static_cast<std::uint32_t>(m_settings.translationSize);
    m_bits.Put(size != 0 ? 1 : 0, 1);
    m_bits.Put(size, size != 0 ? 32 : 0);
    std::size_t index = 0;
    for (std::size_t start = 0; start < m_data.size(); start += m_settings.blockSize) {
      const std::size_t end = std::min(start + m_settings.blockSize, m_data.size());
      const LzxBlocks kind = m_settings.blocks[index++ % m_settings.blocks.size()];
      m_bits.Put(static_cast<std::uint32_t>(kind) + 1, 3);
      m_bits.Put(static_cast<std::uint32_t>(end - start), 24);
      if (kind == LzxBlocks::kUncompressed) {
        WriteRaw(start, end);
      } else {
        WriteTokens(start, end, kind == LzxBlocks::kAligned);
      }
    }
    return std::move(m_frames);
  }

 private:
  static std::size_t FrameEnd(std::size_t at) { return (at / kFrame + 1) * kFrame; }

  void EndFrameAt(std::size_t at) {
    if (at % kFrame != 0 && at != m_data.size()) return;
    if (!m_bits.IsAligned()) m_bits.Pad();
    m_frames.push_back(std::exchange(m_bits.bytes, {}));
  }

  void WriteRaw(std::size_t start, std::size_t end) {
    m_bits.Pad();
    for (const std::uint32_t distance : m_recent) m_bits.bytes += Little(distance, 4);
    for (std::size_t at = start; at < end;) {
      const std::size_t next = std::min(end, FrameEnd(at));
      m_bits.bytes.append(m_data, at, next - at);
      at = next;
      if (at == end && (end - start) % 2 != 0) m_bits.bytes += '\0';
      EndFrameAt(at);
    }
  }

  void WriteTokens(std::size_t start, std::size_t end, bool isAligned) {
    std::vector<Token> tokens;
    Counts mainCounts(kLiterals + m_matchLengths.size());
    Counts lengthCounts(m_lengthLengths.size());
    for (std::size_t at = start; at < end; at = tokens.back().end) {
      const Token& token = tokens.emplace_back(NextToken(at, std::min(end, FrameEnd(at))));
      ++mainCounts[token.symbol];
      if (token.lengthSymbol >= 0) ++lengthCounts[static_cast<std::size_t>(token.lengthSymbol)];
    }
    for (std::uint32_t& count : mainCounts) count *= m_settings.hasLongCodes ? count : 1;
    const Lengths alignedLengths{1, 2, 3, 4, 5, 6, 7, 7};
    for (const std::uint8_t length : alignedLengths) m_bits.Put(length, isAligned ? 3 : 0);
    const Code aligned(alignedLengths);
    const Lengths mainLengths = LengthsFor(mainCounts);
    WriteLengths({mainLengths.begin(), mainLengths.begin() + kLiterals}, m_literalLengths);
    WriteLengths({mainLengths.begin() + kLiterals, mainLengths.end()}, m_matchLengths);
    WriteLengths(LengthsFor(lengthCounts), m_lengthLengths);
    const Code main(mainLengths);
    const Code lengths(m_lengthLengths);
    for (const Token& token : tokens) {
      main.Put(m_bits, token.symbol);
      if (token.lengthSymbol >= 0) lengths.Put(m_bits, static_cast<unsigned>(token.lengthSymbol));
      const unsigned alignedBits = isAligned && token.extraBits >= 3 ? 3 : 0;
      m_bits.Put(token.extra >> alignedBits, token.extraBits - alignedBits);
      if (alignedBits != 0) aligned.Put(m_bits, token.extra % 8);
      EndFrameAt(token.end);
    }
  }

  /// Differences to the lengths before, runs of equal lengths taken together.
  void WriteLengths(const Lengths& lengths, Lengths& before) {
    const Lengths codeLengths{2, 6, 6, 6, 6, 6, 6, 6, 6, 4, 5, 6, 7, 8, 9, 10, 10, 2, 3, 3};
    for (const std::uint8_t length : codeLengths) m_bits.Put(length, 4);
    const Code code(codeLengths);
    for (std::size_t i = 0; i < lengths.size();) {
      const std::size_t most = std::min<std::size_t>(lengths.size() - i, lengths[i] == 0 ? 51 : 5);
      std::uint32_t run = 1;
      while (run < most && lengths[i + run] == lengths[i]) ++run;
      const unsigned difference = (17U + before[i] - lengths[i]) % 17;
      if (run < 4) {
        code.Put(m_bits, difference);
        run = 1;
      } else if (lengths[i] != 0) {
        code.Put(m_bits, 19);
        m_bits.Put(run - 4, 1);
        code.Put(m_bits, difference);
      } else {
        code.Put(m_bits, run < 20 ? 17 : 18);
        m_bits.Put(run < 20 ? run - 4 : run - 20, run < 20 ? 4 : 5);
      }
      i += run;
    }
    before = lengths;
  }

  /// The longest match from where the last ones came, or with the last place
  /// that begins alike.
  Token NextToken(std::size_t at, std::size_t end) {
    const std::size_t most = std::min(end - at, kLongestMatch);
    std::size_t length = 1;
    std::uint32_t distance = 0;
    const auto found = static_cast<std::uint32_t>(at - m_places[Hash(at)]);
    for (const std::uint32_t candidate : {m_recent[0], m_recent[1], m_recent[2], found}) {
      if (candidate > at || candidate > m_nWindow - 3) continue;
      std::size_t alike = 0;
      while (alike < most && m_data[at - candidate + alike] == m_data[at + alike]) ++alike;
      if (alike <= length) continue;
      length = alike;
      distance = candidate;
    }
    Token token{.symbol = static_cast<std::uint8_t>(m_data[at]), .end = at + 1};
    if (length > 1) token = MatchToken(at, length, distance);
    for (; at < token.end; ++at) m_places[Hash(at)] = at;
    return token;
  }

  Token MatchToken(std::size_t at, std::size_t length, std::uint32_t distance) {
    Token token{.end = at + length};
    auto slot = static_cast<std::size_t>(std::find(m_recent.begin(), m_recent.end(), distance) -
                                         m_recent.begin());
    if (slot < m_recent.size()) {
      std::swap(m_recent[0], m_recent[slot]);
    } else {
      m_recent = {distance, m_recent[0], m_recent[1]};
      const Slot found = SlotOf(distance + 2);
      slot = found.index;
      token.extra = distance + 2 - found.base;
      token.extraBits = found.extraBits;
    }
    const std::size_t header = std::min<std::size_t>(length - 2, 7);
    token.symbol = kLiterals + slot * 8 + header;
    if (header == 7) token.lengthSymbol = static_cast<int>(length - 9);
    return token;
  }

  /// Of three bytes, the last of which may lie behind the end.
  std::size_t Hash(std::size_t at) const {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, m_data.data() + at, std::min<std::size_t>(3, m_data.size() - at));
    return bytes * 2654435761U >> 16;
  }

  std::string m_data;
  LzxSettings m_settings;
  std::uint32_t m_nWindow;
  /// As the block before had them.
  Lengths m_literalLengths = Lengths(kLiterals);
  Lengths m_matchLengths = Lengths(8 * SlotOf(m_nWindow).index);
  Lengths m_lengthLengths = Lengths(249);
  std::array<std::uint32_t, 3> m_recent{1, 1, 1};
  /// By the hash of the bytes there; none is past all.
  std::vector<std::size_t> m_places = std::vector<std::size_t>(65536, SIZE_MAX);
  Bits m_bits;
  std::vector<std::string> m_frames;
};

/// Turns the distances of x86 calls into places.
void TranslateCalls(std::string& data, std::int32_t size) {
  for (std::size_t frame = 0; frame < data.size(); frame += kFrame) {
    const std::size_t end = std::min(frame + kFrame, data.size());
    for (std::size_t i = frame; i + 10 < end; ++i) {
      if (data[i] != '\xE8') continue;
      const auto place = static_cast<std::int32_t>(i);
      std::int32_t distance = 0;
      std::memcpy(&distance, &data[i + 1], 4);
      if (distance >= -place && distance < size) {
        const std::int32_t shift = distance < size - place ? place : -size;
        Put(data, i + 1, Little(static_cast<std::uint32_t>(distance + shift), 4));
      }
      i += 4;
    }
  }
}

}  // namespace

std::vector<std::string> WriteLzx(std::string data, const LzxSettings& settings) {
  if (settings.translationSize != 0) TranslateCalls(data, settings.translationSize);
  return Writer(std::move(data), settings).Write();
}

}  // namespace testsupport
