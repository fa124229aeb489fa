// LZX, as cabinets use it.
#pragma once

#include <array>

#include "platform/cabinet/decoder.h"
#include "platform/cabinet/huffman.h"
#include "platform/cabinet/lzxinput.h"

namespace cabinet {

/// The data of a folder is one LZX stream. Each block of the cabinet holds one
/// frame of it, padded to 16 bits; the stream has blocks of its own, with codes
/// of their own, that do not care for frames.
class LzxDecoder final : public Decoder {
 public:
  static constexpr unsigned kSmallestWindowBits = 15;

  LzxDecoder(const Host& host, unsigned windowBits);

  const BYTE* Decode(std::span<const BYTE> packed, std::size_t size) override;

 private:
  static constexpr unsigned kLiterals = 256;
  static constexpr unsigned kMostSlots = 50;
  static constexpr unsigned kLengthHeaders = 8;
  static constexpr unsigned kMainSymbols = kLiterals + kMostSlots * kLengthHeaders;
  static constexpr unsigned kLengthSymbols = 249;
  static constexpr unsigned kAlignedSymbols = 8;

  using RecentDistances = std::array<DWORD, 3>;

  enum class BlockKind { kNone = 0, kVerbatim = 1, kAligned = 2, kUncompressed = 3 };

  void MakeRoom(std::size_t size);
  void DecodeRun(LzxInput& input, BYTE* end);
  void ReadStreamHeader(BitReader& bits);
  void ReadBlockHeader(LzxInput& input);
  void ReadCodes(BitReader& bits);
  static std::array<BYTE, kAlignedSymbols> ReadAlignedLengths(BitReader& bits);
  void ReadLengths(BitReader& bits, std::span<BYTE> lengths);
  void ReadRawStart(LzxInput& input);
  template <bool kIsAligned>
  BYTE* DecodeMatches(BitReader& bits, BYTE* out, const BYTE* end);
  template <bool kIsAligned>
  std::size_t ReadDistance(BitReader& bits, unsigned slot, RecentDistances& recent) const;
  BYTE* CopyRaw(LzxInput& input, BYTE* out, BYTE* end);
  void Reach(std::size_t distance, const BYTE* out);
  const BYTE* Translate(const BYTE* frame, std::size_t size);

  std::size_t m_nWindow;
  unsigned m_nMainSymbols;
  /// The last window of bytes, and room for as many to come.
  Memory m_text;
  BYTE* m_pTextEnd;
  BYTE* m_pOut;
  /// The farthest byte back that holds text.
  BYTE* m_pReach;
  /// For the LzxInput of each block.
  Memory m_words;
  Memory m_translated;

  bool m_bStarted = false;
  /// What call targets are counted against; 0 when they are as they were.
  LONG m_nTranslationSize = 0;
  /// Bytes that came out before this frame.
  std::uint64_t m_nPosition = 0;

  BlockKind m_kind = BlockKind::kNone;
  DWORD m_nBlockLeft = 0;
  /// An uncompressed block of odd length is followed by one byte of padding.
  bool m_bPaddingDue = false;
  RecentDistances m_arrRecent{1, 1, 1};

  std::array<BYTE, kMainSymbols> m_mainLengths{};
  std::array<BYTE, kLengthSymbols> m_lengthLengths{};
  HuffmanCode<kMainSymbols, 11> m_main;
  HuffmanCode<kLengthSymbols, 10> m_lengths;
  HuffmanCode<kAlignedSymbols, 7> m_aligned;
};

}  // namespace cabinet
