// A packed LZX block, which holds bits and, in between, bytes as they are.
#pragma once

#include "platform/cabinet/bitreader.h"

namespace cabinet {

class LzxInput {
 public:
  static constexpr std::size_t kMostBytes = 65536;
  /// What `words` has to have room for.
  static constexpr std::size_t kWordsSize = kMostBytes + BitReader::kPadding;

  /// `words` is working memory. Both must outlive the object.
  LzxInput(std::span<const BYTE> packed, BYTE* words)
      : bits(Exchange(packed, words)), m_packed(packed), m_pWords(words) {}

  BitReader bits;

  /// Whole bytes taken, of those that came with the block.
  std::size_t BytePosition() const { return m_nStart + bits.Position() / 8; }
  std::span<const BYTE> Bytes() const { return m_packed; }
  /// Goes on with the bits from a byte on.
  void GoTo(std::size_t byte);

 private:
  static BitReader Exchange(std::span<const BYTE> packed, BYTE* words);

  std::span<const BYTE> m_packed;
  BYTE* m_pWords;
  /// Where the words begin: behind bytes of odd number they lie differently.
  std::size_t m_nStart = 0;
};

}  // namespace cabinet
