#include "sevenzip/volumesequence.h"

#include "morvunp/platform/platform.h"

namespace morvunp::sevenzip {
namespace {

/// Length of the counter at the end of an extension whose last two characters
/// begin it: all further characters to the left that are `filler` belong to it.
std::size_t CounterLength(const std::wstring& extension, wchar_t filler) {
  std::size_t length = 2;
  while (length < extension.size() && extension[extension.size() - length - 1] == filler) ++length;
  return length;
}

}  // namespace

std::optional<CVolumeSequence> CVolumeSequence::OfFirstVolume(const std::wstring& name) {
  const std::size_t start = name.rfind(L'.') + 1;
  const std::wstring extension = name.substr(start);
  std::wstring upper = extension;
  CharUpperW(upper.data());

  CVolumeSequence sequence;
  sequence.m_strPrefix = name.substr(0, start);
  std::size_t length = 0;
  if (upper.ends_with(L"AA")) {
    sequence.m_bLetters = true;
    length = CounterLength(upper, L'A');
  } else if (extension.ends_with(L"01")) {
    length = CounterLength(extension, L'0');
    if (length != extension.size()) return std::nullopt;
  } else {
    return std::nullopt;
  }
  sequence.m_strCounterPart = extension.substr(extension.size() - length);
  sequence.m_strFixedPart = name.substr(0, name.size() - length);
  return sequence;
}

std::wstring CVolumeSequence::SetName() const {
  return m_strPrefix.empty() ? L"file" : m_strPrefix.substr(0, m_strPrefix.size() - 1);
}

std::wstring CVolumeSequence::GetNextName() {
  if (m_bLetters) {
    CountLetters();
  } else {
    CountDigits();
  }
  return m_strFixedPart + m_strCounterPart;
}

void CVolumeSequence::CountLetters() {
  for (std::size_t i = m_strCounterPart.size(); i-- > 0;) {
    wchar_t& letter = m_strCounterPart[i];
    const bool isSmall = letter == L'z';
    if (isSmall || letter == L'Z') {
      letter = isSmall ? L'a' : L'A';
      continue;
    }
    ++letter;
    // With its last letter used up in front, the counter goes on longer.
    if (i == 0 && (letter == L'z' || letter == L'Z')) {
      const wchar_t first = letter == L'z' ? L'a' : L'A';
      m_strFixedPart += letter;
      m_strCounterPart.assign(m_strCounterPart.size() + 1, first);
    }
    return;
  }
}

void CVolumeSequence::CountDigits() {
  for (std::size_t i = m_strCounterPart.size(); i-- > 0;) {
    wchar_t& digit = m_strCounterPart[i];
    if (digit != L'9') {
      ++digit;
      return;
    }
    digit = L'0';
  }
  m_strCounterPart.insert(0, 1, L'1');
}

}  // namespace morvunp::sevenzip
