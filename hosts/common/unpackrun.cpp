#include "hosts/common/unpackrun.h"

#include <optional>
#include <type_traits>

namespace host {
namespace {

/// True for the formats whose UnpackCurrentFile writes the item that the walk
/// has reached. A cabinet finds the items of a run by their paths.
template <class U>
constexpr bool kUnpacksAtCursor = !std::is_same_v<U, CCabUnpacker>;

template <class U>
void UnpackAtCursor(U& unpacker, const Request& request, const Item& item,
                    const OutputPlace& place) {
  // The folders of an item that is refused are not made either.
  if (!IsSafeItem(item.path, item.name)) return;
  if (!MakeOutputFolder(place.folder, request.target)) return;
  unpacker.UnpackCurrentFile(std::wstring(item.name), place.folder);
}

/// Takes each file of a run that no single operation of the library is for.
template <class U>
void UnpackEachFile(U& unpacker, const Request& request, const Run& run, const StopRequest& stop) {
  std::vector<std::wstring> paths;
  WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
    const Item item = ItemOf(record);
    const auto place = PlaceInRun(request, run, item);
    if (!place || IsContinuation(record)) return true;
    if constexpr (kUnpacksAtCursor<U>) {
      UnpackAtCursor(unpacker, request, item, *place);
    } else {
      paths.emplace_back(item.path);
    }
    return !stop.Stopped();
  });
  for (const std::wstring& path : paths) {
    if (stop.Stopped()) return;
    unpacker.UnpackFile(path, request.target);
  }
}

/// UnpackFile takes the first file with this path in any case; one that comes
/// later and is spelled exactly so has to be reached by the walk.
template <class U>
void UnpackOneFile(U& unpacker, const Request& request, const Run& run) {
  bool isFirst = true;
  std::optional<OutputPlace> place;
  WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
    const Item item = ItemOf(record);
    place = PlaceInRun(request, run, item);
    if (!place && _wcsicmp(item.path.c_str(), run.path.c_str()) == 0)
      isFirst = !kUnpacksAtCursor<U>;
    if (!place || isFirst) return !place;
    UnpackAtCursor(unpacker, request, item, *place);
    return false;
  });
  if (place && isFirst) unpacker.UnpackFile(run.path, request.target);
}

/// False when the library failed a run as a whole.
template <class U>
bool UnpackRun(U& unpacker, const Request& request, const Run& run, const StopRequest& stop) {
  switch (run.kind) {
    case RunKind::kArchive:
      return unpacker.UnpackArchive(request.target);
    case RunKind::kFolder:
      return unpacker.UnpackFolder(run.path, request.target);
    case RunKind::kFolderFlat:
    case RunKind::kFiles:
      UnpackEachFile(unpacker, request, run, stop);
      return true;
    case RunKind::kFile:
      UnpackOneFile(unpacker, request, run);
      return true;
  }
  return true;
}

/// The library left items of a run aside. Most classes answer a run with the
/// result of its last item, which tells nothing of that.
template <class U>
bool EndedEarly(const U& unpacker, bool) {
  return ReasonOfGap(unpacker).has_value();
}

/// The 7z engine goes on after an item that is damaged, so that what fails a
/// run is what ended it.
bool EndedEarly(const C7zUnpacker&, bool result) { return !result; }

}  // namespace

void UnpackRequest(Archive& archive, const Request& request, const StopRequest& stop,
                   ItemProblems& problems) {
  for (std::size_t i = 0; i < request.runs.size(); ++i) {
    if (stop.Stopped()) return;
    WithUnpacker(archive, [&](auto& unpacker) {
      const bool result = UnpackRun(unpacker, request, request.runs[i], stop);
      if (EndedEarly(unpacker, result)) problems.EndRun(i);
    });
  }
}

}  // namespace host
