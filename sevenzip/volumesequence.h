// The names of the volumes of a split set: name.001, name.002, ... or name.aa,
// name.ab, ...
#pragma once

#include <optional>
#include <string>

namespace morvunp::sevenzip {

class CVolumeSequence {
 public:
  /// None when `name` is not that of a first volume.
  static std::optional<CVolumeSequence> OfFirstVolume(const std::wstring& name);

  /// The name of the set: without the counter and the dot before it; "file"
  /// when nothing is left.
  std::wstring SetName() const;
  /// Counts on. After 999 comes 1000, after yz comes zaaa.
  std::wstring GetNextName();

 private:
  void CountLetters();
  void CountDigits();

  /// What comes before the last dot, and the dot.
  std::wstring m_strPrefix;
  /// Everything before the counter.
  std::wstring m_strFixedPart;
  /// In the case in which the first volume spells it.
  std::wstring m_strCounterPart;
  bool m_bLetters = false;
};

}  // namespace morvunp::sevenzip
