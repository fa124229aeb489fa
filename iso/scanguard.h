// Bounds that keep the scan of a hostile image finite.
#pragma once

#include <cstddef>
#include <unordered_set>

#include "frame/keyedhash.h"
#include "morvunp/platform/platform.h"

namespace morvunp::iso {

/// Decides whether the contents of a folder are read. Folders that are not
/// entered stay in the list, empty. Honest images never meet these bounds:
///
/// - a folder is entered once, so that loops and folders with many parents
///   end;
/// - what is in memory of a folder and of those that it lies in is bounded,
///   because a sparse image costs its maker nothing;
/// - all directories together hold no more bytes than the image, so that
///   overlapping extents cannot multiply what it holds;
/// - a path is no longer than the system can create, and all paths together
///   stay in proportion to the directory bytes that made them;
/// - folders nest no deeper than paths of that length could say.
class ScanGuard {
 public:
  explicit ScanGuard(ULONGLONG imageSize) : m_nBytesLeft(imageSize), m_nAllocationLeft(imageSize) {}

  /// `key` names the folder's place in the image; `length` is the number of
  /// bytes that reading it takes, `pathLength` the characters of its path.
  /// After a true result call Leave with the same length.
  bool Enter(ULONGLONG key, ULONGLONG length, std::size_t pathLength);
  void Leave(ULONGLONG length);
  /// The most bytes that Enter lets be read of the next folder.
  ULONGLONG Room() const { return kMostHeld - m_nBytesHeld; }
  /// Counts bytes of allocation descriptors and embedded data that are kept for
  /// an item. False when all together exceed what the image can hold, as when
  /// many names lead to one large entry.
  bool CountAllocation(ULONGLONG length);
  /// Counts the characters of an item's path. False when no more items can be
  /// listed: what a host keeps of them would outgrow the image.
  bool CountPath(std::size_t length);

 private:
  // More than a million records of an ISO 9660 directory.
  static constexpr ULONGLONG kMostHeld = 64 << 20;

  ULONGLONG m_nBytesLeft;
  ULONGLONG m_nAllocationLeft;
  ULONGLONG m_nBytesRead = 0;
  /// Of the folders that were entered and not left.
  ULONGLONG m_nBytesHeld = 0;
  ULONGLONG m_nPathCharacters = 0;
  int m_nDepth = 0;
  std::unordered_set<ULONGLONG, frame::KeyedHash> m_entered;
};

}  // namespace morvunp::iso
