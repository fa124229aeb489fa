#include "support/lzxwriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <queue>
#include <span>
#include <utility>

namespace testsupport {
namespace {

constexpr std::size_t kFrame = 32768;
constexpr unsigned kLongestCode = 16;
constexpr std::size_t kMostMatch = 257;

/// 16-bit little-endian words, filled from their most significant bit.
class Bits {
 public:
  void Put(std::uint32_t value, unsigned count) {
    while (count-- > 0) {
      m_nWord = m_nWord << 1 | (value >> count & 1);
      if (++m_nFilled == 16) Flush();
    }
  }
  void Align() {
    if (m_nFilled > 0) Put(0, 16 - m_nFilled);
  }
  /// Between 1 and 16 bits, to the next word.
  void Pad() { Put(0, 16 - m_nFilled); }
  void Append(std::string_view bytes) { m_bytes += bytes; }
  std::string Take() { return std::exchange(m_bytes, {}); }
  std::size_t Size() const { return m_bytes.size(); }

 private:
  void Flush() {
    m_bytes += static_cast<char>(m_nWord);
    m_bytes += static_cast<char>(m_nWord >> 8);
    m_nWord = m_nFilled = 0;
  }

  std::string m_bytes;
  std::uint32_t m_nWord = 0;
  unsigned m_nFilled = 0;
};

/// Lengths and values of a canonical Huffman code.
class Code {
 public:
  Code(std::vector<std::uint32_t> counts, unsigned longest) {
    // Flatter counts until no code is too long.
    while (!MakeLengths(counts, longest)) {
      for (std::uint32_t& count : counts) count = count == 0 ? 0 : count / 2 + 1;
    }
    MakeValues();
  }
  explicit Code(std::vector<std::uint8_t> given) : lengths(std::move(given)) { MakeValues(); }

  void Put(Bits& bits, unsigned symbol) const { bits.Put(m_values[symbol], lengths[symbol]); }

  std::vector<std::uint8_t> lengths;

 private:
  bool MakeLengths(const std::vector<std::uint32_t>& counts, unsigned longest) {
    using Node = std::pair<std::uint64_t, std::size_t>;
    std::priority_queue<Node, std::vector<Node>, std::greater<>> open;
    std::vector<std::size_t> parents(2 * counts.size(), 0);
    for (std::size_t i = 0; i < counts.size(); ++i) {
      if (counts[i] != 0) open.emplace(counts[i], i);
    }
    lengths.assign(counts.size(), 0);
    // Some readers want a code without gaps.
    if (open.size() == 1) lengths[open.top().second] = lengths[open.top().second == 0 ? 1 : 0] = 1;
    if (open.size() < 2) return true;
    std::size_t next = counts.size();
    while (open.size() > 1) {
      const Node left = open.top();
      open.pop();
      const Node right = open.top();
      open.pop();
      parents[left.second] = parents[right.second] = next;
      open.emplace(left.first + right.first, next++);
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
      std::size_t length = 0;
      for (std::size_t node = i; counts[i] != 0 && node != next - 1; node = parents[node]) ++length;
      if (length > longest) return false;
      lengths[i] = static_cast<std::uint8_t>(length);
    }
    return true;
  }

  void MakeValues() {
    m_values.resize(lengths.size());
    std::uint32_t value = 0;
    for (unsigned length = 1; length <= kLongestCode; ++length, value <<= 1) {
      for (std::size_t i = 0; i < lengths.size(); ++i) {
        if (lengths[i] == length) m_values[i] = value++;
      }
    }
  }

  std::vector<std::uint32_t> m_values;
};

/// A literal, or a match by its length and where it comes from.
struct Token {
  std::uint16_t symbol = 0;
  /// Symbol of the length code; none below 0.
  std::int16_t lengthSymbol = -1;
  std::uint32_t extra = 0;
  std::uint8_t extraBits = 0;
};

class Writer {
 public:
  Writer(std::string data, const LzxSettings& settings)
      : m_data(std::move(data)), m_settings(settings), m_nWindow(1U << settings.windowBits) {
    std::uint32_t base = 0;
    for (unsigned i = 0; base < m_nWindow; ++i) {
      m_extraBits.push_back(static_cast<std::uint8_t>(i < 4 ? 0 : std::min(i / 2 - 1, 17U)));
      m_bases.push_back(base);
      base += 1U << m_extraBits.back();
    }
    m_mainLengths.assign(256 + 8 * m_bases.size(), 0);
    m_heads.assign(65536, SIZE_MAX);
    m_links.assign(m_data.size(), SIZE_MAX);
  }

  std::vector<std::string> Write() {
    m_bits.Put(m_settings.translationSize != 0 ? 1 : 0, 1);
    if (m_settings.translationSize != 0) {
      m_bits.Put(static_cast<std::uint32_t>(m_settings.translationSize), 32);
    }
    for (std::size_t start = 0; start < m_data.size(); start += m_settings.blockSize) {
      WriteBlock(start, std::min(start + m_settings.blockSize, m_data.size()));
    }
    if (!m_data.empty() && m_data.size() % kFrame != 0) EndFrame();
    return std::move(m_frames);
  }

 private:
  void EndFrame() {
    m_bits.Align();
    m_frames.push_back(m_bits.Take());
  }

  void WriteBlock(std::size_t start, std::size_t end) {
    m_bits.Put(static_cast<std::uint32_t>(m_settings.blocks) + 1, 3);
    m_bits.Put(static_cast<std::uint32_t>(end - start), 24);
    if (m_settings.blocks == LzxBlocks::kUncompressed) {
      WriteRaw(start, end);
    } else {
      WriteTokens(start, end);
    }
  }

  void WriteRaw(std::size_t start, std::size_t end) {
    m_bits.Pad();
    for (const std::uint32_t distance : m_recent) {
      for (unsigned shift = 0; shift < 32; shift += 8) {
        m_bits.Append(std::string(1, static_cast<char>(distance >> shift)));
      }
    }
    for (std::size_t at = start; at < end;) {
      const std::size_t run = std::min(end, (at / kFrame + 1) * kFrame) - at;
      m_bits.Append(std::string_view(m_data).substr(at, run));
      at += run;
      if (at == end && (end - start) % 2 != 0) m_bits.Append(std::string(1, '\0'));
      if (at % kFrame == 0) EndFrame();
    }
  }

  void WriteTokens(std::size_t start, std::size_t end) {
    // Tokens of the block, each with where it ends.
    std::vector<std::pair<Token, std::size_t>> tokens;
    std::vector<std::uint32_t> mainCounts(m_mainLengths.size(), 0);
    std::vector<std::uint32_t> lengthCounts(249, 0);
    for (std::size_t at = start; at < end;) {
      const Token token = NextToken(at, std::min(end, (at / kFrame + 1) * kFrame));
      ++mainCounts[token.symbol];
      if (token.lengthSymbol >= 0) ++lengthCounts[static_cast<std::size_t>(token.lengthSymbol)];
      tokens.emplace_back(token, at);
    }
    const Code main(std::move(mainCounts), kLongestCode);
    const Code lengths(std::move(lengthCounts), kLongestCode);
    const bool isAligned = m_settings.blocks == LzxBlocks::kAligned;
    const Code aligned(std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 7});
    if (isAligned) {
      for (const std::uint8_t length : aligned.lengths) m_bits.Put(length, 3);
    }
    WriteLengths(std::span(main.lengths).first(256), std::span(m_mainLengths).first(256));
    WriteLengths(std::span(main.lengths).subspan(256), std::span(m_mainLengths).subspan(256));
    WriteLengths(lengths.lengths, m_lengthLengths);
    for (const auto& [token, tokenEnd] : tokens) {
      main.Put(m_bits, token.symbol);
      if (token.lengthSymbol >= 0) lengths.Put(m_bits, static_cast<unsigned>(token.lengthSymbol));
      if (isAligned && token.extraBits >= 3) {
        m_bits.Put(token.extra >> 3, token.extraBits - 3U);
        aligned.Put(m_bits, token.extra & 7);
      } else {
        m_bits.Put(token.extra, token.extraBits);
      }
      if (tokenEnd % kFrame == 0) EndFrame();
    }
  }

  /// Differences to the lengths before, runs of zeros taken together.
  void WriteLengths(std::span<const std::uint8_t> lengths, std::span<std::uint8_t> before) {
    std::vector<std::array<std::uint32_t, 3>> codes;
    std::vector<std::uint32_t> counts(20, 0);
    for (std::size_t i = 0; i < lengths.size();) {
      std::size_t zeros = 0;
      while (i + zeros < lengths.size() && lengths[i + zeros] == 0 && zeros < 51) ++zeros;
      const std::uint32_t difference = (17U + before[i] - lengths[i]) % 17;
      const auto run = static_cast<std::uint32_t>(zeros);
      codes.push_back(zeros >= 20  ? std::array{18U, run - 20, 5U}
                      : zeros >= 4 ? std::array{17U, run - 4, 4U}
                                   : std::array{difference, 0U, 0U});
      ++counts[codes.back()[0]];
      i += zeros >= 4 ? zeros : 1;
    }
    const Code code(std::move(counts), 15);
    for (const std::uint8_t length : code.lengths) m_bits.Put(length, 4);
    for (const auto& [symbol, extra, extraBits] : codes) {
      code.Put(m_bits, symbol);
      m_bits.Put(extra, extraBits);
    }
    std::copy(lengths.begin(), lengths.end(), before.begin());
  }

  Token NextToken(std::size_t& at, std::size_t end) {
    std::size_t distance = 0;
    const std::size_t length = FindMatch(at, end, distance);
    const std::size_t start = at;
    at += std::max<std::size_t>(length, 1);
    for (std::size_t i = start; i < at && i + 3 <= m_data.size(); ++i) Remember(i);
    if (length == 0) return {.symbol = static_cast<std::uint8_t>(m_data[start])};
    return MatchToken(length, static_cast<std::uint32_t>(distance));
  }

  Token MatchToken(std::size_t length, std::uint32_t distance) {
    Token token;
    const auto recent = std::find(m_recent.begin(), m_recent.end(), distance) - m_recent.begin();
    auto slot = static_cast<std::size_t>(recent);
    if (slot < m_recent.size()) {
      std::swap(m_recent[0], m_recent[slot]);
    } else {
      m_recent = {distance, m_recent[0], m_recent[1]};
      const std::uint32_t formatted = distance + 2;
      slot = static_cast<std::size_t>(std::upper_bound(m_bases.begin(), m_bases.end(), formatted) -
                                      m_bases.begin() - 1);
      token.extra = formatted - m_bases[slot];
      token.extraBits = m_extraBits[slot];
    }
    const std::size_t header = std::min<std::size_t>(length - 2, 7);
    if (header == 7) token.lengthSymbol = static_cast<std::int16_t>(length - 9);
    token.symbol = static_cast<std::uint16_t>(256 + slot * 8 + header);
    return token;
  }

  std::size_t Hash(std::size_t at) const {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, m_data.data() + at, 3);
    return bytes * 2654435761U >> 16;
  }

  void Remember(std::size_t at) {
    std::size_t& head = m_heads[Hash(at)];
    m_links[at] = head;
    head = at;
  }

  /// The longest of a few earlier places with the same beginning; 0 for none.
  std::size_t FindMatch(std::size_t at, std::size_t end, std::size_t& distance) const {
    if (end - at < 3) return 0;
    const std::size_t most = std::min(end - at, kMostMatch);
    std::size_t best = 0;
    std::size_t from = m_heads[Hash(at)];
    for (int tries = 0; tries < 16 && from != SIZE_MAX && at - from <= m_nWindow - 3; ++tries) {
      std::size_t length = 0;
      while (length < most && m_data[from + length] == m_data[at + length]) ++length;
      if (length > best) {
        best = length;
        distance = at - from;
      }
      from = m_links[from];
    }
    return best >= 3 ? best : 0;
  }

  std::string m_data;
  LzxSettings m_settings;
  std::size_t m_nWindow;
  std::vector<std::uint8_t> m_extraBits;
  std::vector<std::uint32_t> m_bases;
  std::vector<std::uint8_t> m_mainLengths;
  std::array<std::uint8_t, 249> m_lengthLengths{};
  std::array<std::uint32_t, 3> m_recent{1, 1, 1};
  std::vector<std::size_t> m_heads;
  std::vector<std::size_t> m_links;
  Bits m_bits;
  std::vector<std::string> m_frames;
};

/// Turns the distances of x86 calls into places.
std::string TranslateCalls(std::string data, std::int32_t size) {
  for (std::size_t frame = 0; size != 0 && frame < data.size(); frame += kFrame) {
    const std::size_t length = std::min(kFrame, data.size() - frame);
    for (std::size_t i = 0; i + 10 < length; ++i) {
      if (data[frame + i] != '\xE8') continue;
      const auto place = static_cast<std::int32_t>(frame + i);
      std::int32_t distance = 0;
      std::memcpy(&distance, &data[frame + i + 1], 4);
      std::int32_t target = distance;
      if (distance >= -place && distance < size - place) target = distance + place;
      if (distance >= size - place && distance < size) target = distance - size;
      std::memcpy(&data[frame + i + 1], &target, 4);
      i += 4;
    }
  }
  return data;
}

}  // namespace

std::vector<std::string> WriteLzx(std::string_view data, const LzxSettings& settings) {
  return Writer(TranslateCalls(std::string(data), settings.translationSize), settings).Write();
}

}  // namespace testsupport
