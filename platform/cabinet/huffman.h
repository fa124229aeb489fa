// Canonical Huffman codes of up to 16 bits.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include "platform/cabinet/bitreader.h"

namespace cabinet {

/// Decodes short codes with one look at a table of 2^`kTableBits` entries and
/// the few longer ones by comparing with the end of each length's codes.
template <std::size_t kSymbols, unsigned kTableBits>
class HuffmanCode {
 public:
  // The arrays are large and Build fills them.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init,modernize-use-equals-default)
  HuffmanCode() {}

  static constexpr unsigned kMostBits = 16;
  /// What Decode gives for bits that no code begins with.
  static constexpr unsigned kNoSymbol = 0xFFFF;

  /// Makes the code from the lengths of its symbols, 0 for those without one.
  /// False when there are more codes than fit. A code with room left is taken;
  /// so is one without symbols.
  bool Build(std::span<const BYTE> lengths) {
    std::array<unsigned, kMostBits + 1> counts{};
    for (const BYTE length : lengths) ++counts[length];
    counts[0] = 0;
    unsigned code = 0;
    unsigned sorted = 0;
    std::array<unsigned, kMostBits + 1> next{};
    for (unsigned length = 1; length <= kMostBits; ++length) {
      const unsigned end = code + (counts[length] << (kMostBits - length));
      if (end > 1U << kMostBits) return false;
      m_ends[length] = end;
      // Unsigned, so that a start "before 0" comes right again when added to.
      m_starts[length] = sorted - (code >> (kMostBits - length));
      next[length] = sorted;
      sorted += counts[length];
      code = end;
    }
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
      if (lengths[symbol] != 0) m_sorted[next[lengths[symbol]]++] = static_cast<WORD>(symbol);
    }
    FillTable(counts);
    return true;
  }

  /// Takes one symbol; needs 16 bits refilled.
  unsigned Decode(BitReader& bits) const {
    const unsigned entry = m_table[bits.Peek(kTableBits)];
    if (entry != kLongCode) [[likely]] {
      bits.Drop(entry & 0x0F);
      return entry >> 4;
    }
    const Found found = FindLong(bits.Peek(kMostBits));
    bits.Drop(found.length);
    return found.symbol;
  }

 private:
  static_assert(kSymbols < 0x0FFF && kTableBits < 16, "an entry holds a symbol and four bits");
  static constexpr WORD kLongCode = 0;

  struct Found {
    unsigned symbol;
    unsigned length;
  };

  void FillTable(const std::array<unsigned, kMostBits + 1>& counts) {
    WORD* entry = m_table.data();
    const WORD* symbol = m_sorted.data();
    for (unsigned length = 1; length <= kTableBits; ++length) {
      const std::size_t repeat = std::size_t{1} << (kTableBits - length);
      for (unsigned i = 0; i < counts[length]; ++i) {
        std::fill_n(entry, repeat, static_cast<WORD>(unsigned{*symbol++} << 4 | length));
        entry += repeat;
      }
    }
    std::fill(entry, m_table.data() + m_table.size(), kLongCode);
  }

  Found FindLong(unsigned code) const {
    for (unsigned length = kTableBits + 1; length <= kMostBits; ++length) {
      if (code >= m_ends[length]) continue;
      return {m_sorted[m_starts[length] + (code >> (kMostBits - length))], length};
    }
    return {kNoSymbol, 0};
  }

  std::array<WORD, std::size_t{1} << kTableBits> m_table;
  /// By length: the first 16-bit value behind its codes, and what to add to a
  /// code to get its place among the sorted symbols.
  std::array<unsigned, kMostBits + 1> m_ends;
  std::array<unsigned, kMostBits + 1> m_starts;
  /// Symbols by code.
  std::array<WORD, kSymbols> m_sorted;
};

}  // namespace cabinet
