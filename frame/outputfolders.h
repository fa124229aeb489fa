// The folders that a run writes into.
#pragma once

#include <string>
#include <type_traits>

#include "frame/filesystem.h"
#include "morvunp/outputplace.h"
#include "morvunp/unpacker.h"

namespace frame {

/// Makes the folders of one run below its target folder and never goes through
/// a symbolic link that stands between the two. The target itself is the
/// user's own choice and may be reached by links.
class OutputFolders {
 public:
  OutputFolders(CUnpackState& state, const std::wstring& target, FolderReport report)
      : m_state(state), m_target(target), m_report(std::move(report)) {}

  /// True when `folder`, the target or a path below it, exists afterwards.
  bool Make(const std::wstring& folder);
  /// The same for the folder of an item's place, unless the system could not
  /// hold the item's own path. The target folder itself is the caller's to
  /// provide.
  bool MakeFor(const OutputPlace& place);
  /// Something failed in the folder made last: look again before trusting it.
  void Forget() { m_made.clear(); }

 private:
  bool MakeNew(const std::wstring& folder);
  bool IsMade(const std::wstring& folder) const { return !m_made.empty() && folder == m_made; }
  bool LinkOnTheWay(const std::wstring& folder) const;

  CUnpackState& m_state;
  const std::wstring& m_target;
  FolderReport m_report;
  /// The folder made last; files of one folder follow each other.
  std::wstring m_made;
};

/// Writes one item of a run at its place. `unpacker` is positioned on it.
template <class U>
bool WriteItem(U& unpacker, OutputFolders& folders, const OutputPlace& place) {
  // An item that is a folder is made even where its place is the target.
  if (place.name.empty()) return folders.Make(place.folder);
  if (!folders.MakeFor(place)) return false;
  const bool written = unpacker.UnpackCurrentFile(place.name, place.folder);
  if (!written) folders.Forget();
  return written;
}

/// The folder and archive runs of formats that unpack item by item: walks all
/// items and writes those that `placeOf` gives a place, until one is
/// cancelled. The result is that of the last item handled. `Record` is what
/// the items are read into: the class's ShortInfo unless another is named.
template <class Record = void, class U, class PlaceOf, class IsSafe>
bool UnpackByWalking(U& unpacker, CUnpackState& state, const std::wstring& target,
                     const FolderReport& report, PlaceOf placeOf, IsSafe isSafe) {
  state.m_bCancel = 0;
  OutputFolders folders(state, target, report);
  bool result = false;
  using Info = std::conditional_t<std::is_void_v<Record>, typename U::ShortInfo, Record>;
  WalkItems<Info>(unpacker, [&](const Info& info) {
    const std::optional<OutputPlace> place = placeOf(info);
    if (!place) return true;
    result = isSafe() && WriteItem(unpacker, folders, *place);
    return state.m_bCancel == 0;
  });
  return result;
}

}  // namespace frame
