// What the scan of an image finds missing.
#pragma once

#include "morvunp/itemreport.h"

namespace morvunp::iso {

class Completeness {
 public:
  explicit Completeness(ULONGLONG imageSize) : m_nImageSize(imageSize) {}

  /// Data of an item or a directory: an image that ends before it is cut.
  void NoteExtent(ULONGLONG offset, ULONGLONG length) {
    if (length > 0 && offset + length > m_nImageSize) m_bCut = true;
  }
  /// Items may be missing from the list.
  void NoteGap() { m_bGap = true; }

  /// kCutShort, kDamaged or kNone.
  morvunp::ItemReason Problem() const {
    if (m_bCut) return morvunp::ItemReason::kCutShort;
    return m_bGap ? morvunp::ItemReason::kDamaged : morvunp::ItemReason::kNone;
  }

 private:
  ULONGLONG m_nImageSize;
  bool m_bCut = false;
  bool m_bGap = false;
};

}  // namespace morvunp::iso
