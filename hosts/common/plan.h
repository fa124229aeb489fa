// What a command should write, known before it begins.
//
// The plan holds what was told of each item, and numbers instead of names, so
// that an archive of a million items needs little memory; names are found again
// by a second walk.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "hosts/common/archive.h"

namespace host {

enum class RunKind { kArchive, kFolder, kFolderFlat, kFile, kFiles };

/// One operation of the library, or a series of them for kFolderFlat and
/// kFiles.
struct Run {
  RunKind kind;
  /// The selected item; empty for kArchive and kFiles.
  std::wstring path{};
  /// The files of kFiles.
  std::unordered_set<std::wstring> files{};
};

struct Request {
  INIUNPACK settings;
  /// Folder to unpack to, in the library's form.
  std::wstring target;
  std::vector<Run> runs;
};

/// An item, and what was told of it.
struct PlannedItem {
  std::uint64_t position = 0;
  std::uint64_t size = 0;
  bool isFolder = false;
  bool isTold = false;
  morvunp::ItemResult result = morvunp::ItemResult::kNotReached;
  morvunp::ItemReason reason = morvunp::ItemReason::kNone;
  int systemError = 0;
};

struct Plan {
  std::vector<PlannedItem> items;
  /// For each run of the request the index behind its last item.
  std::vector<std::size_t> runEnds;
};

/// Where an item goes in a run; none when it does not belong to the run.
std::optional<morvunp::OutputPlace> PlaceInRun(const Request& request, const Run& run,
                                               const Item& item);

/// Walks the items of a run in the order in which the library writes them and
/// calls `visit(const Item&, const morvunp::OutputPlace&)`.
template <class Visit>
void ForEachInRun(Archive& archive, const Request& request, const Run& run, Visit visit) {
  ForEachItem(archive, [&](const Item& item) {
    const auto place = PlaceInRun(request, run, item);
    if (place) visit(item, *place);
    // A file selection is one item, however many share its path.
    return !place || run.kind != RunKind::kFile;
  });
}

/// The same for all runs, one after the other.
template <class Visit>
void ForEachPlanned(Archive& archive, const Request& request, Visit visit) {
  for (const Run& run : request.runs) ForEachInRun(archive, request, run, visit);
}

Plan MakePlan(Archive& archive, const Request& request);

}  // namespace host
