// Hashing what an archive chooses, so that it cannot choose collisions: the keys
// are random and differ from process to process.
#pragma once

#include <cstddef>
#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// For unordered containers whose keys are numbers out of an archive. The
/// standard library's hash of a number is the number, so that an archive could
/// put all of them into one bucket.
struct KeyedHash {
  std::size_t operator()(ULONGLONG number) const noexcept;
};

/// SipHash-1-3 of a text, 64 bits to a round, two characters at a time. Sums of
/// powers, with whatever start, can be made to collide without knowing the key;
/// this cannot.
class TextHash {
 public:
  TextHash();

  void Add(wchar_t character);
  ULONGLONG Result();

 private:
  void Round();
  void AddWord(ULONGLONG word);

  ULONGLONG m_v0, m_v1, m_v2, m_v3;
  ULONGLONG m_nPending = 0;
  ULONGLONG m_nCount = 0;
};

ULONGLONG HashOfText(std::wstring_view text);

}  // namespace morvunp::frame
