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
                    const morvunp::OutputPlace& place) {
  // The folders of an item that is refused are not made either; what cannot be
  // made shows where the item is to be written.
  if (morvunp::IsSafeItem(item.path, item.name))
    morvunp::MakeOutputFolder(place.folder, request.target);
  unpacker.UnpackCurrentFile(std::wstring(item.name), place.folder);
}

/// Takes each file of a run that no single operation of the library is for.
template <class U>
void UnpackEachFile(U& unpacker, const Request& request, const Run& run, const StopRequest& stop) {
  std::vector<std::wstring> paths;
  morvunp::WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
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
  std::optional<morvunp::OutputPlace> place;
  morvunp::WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& record) {
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

template <class U>
void UnpackRun(U& unpacker, const Request& request, const Run& run, const StopRequest& stop) {
  switch (run.kind) {
    case RunKind::kArchive:
      unpacker.UnpackArchive(request.target);
      break;
    case RunKind::kFolder:
      unpacker.UnpackFolder(run.path, request.target);
      break;
    case RunKind::kFolderFlat:
    case RunKind::kFiles:
      UnpackEachFile(unpacker, request, run, stop);
      break;
    case RunKind::kFile:
      UnpackOneFile(unpacker, request, run);
      break;
  }
}

}  // namespace

void UnpackRequest(Archive& archive, const Request& request, const StopRequest& stop,
                   UnpackWatch& watch) {
  for (std::size_t i = 0; i < request.runs.size(); ++i) {
    if (stop.Stopped()) return;
    watch.EnterRun(i);
    WithUnpacker(archive,
                 [&](auto& unpacker) { UnpackRun(unpacker, request, request.runs[i], stop); });
  }
}

}  // namespace host
