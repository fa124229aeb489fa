#include "plan.h"

#include <functional>

namespace terminal {
namespace {

PlannedItem PlannedOf(const Item& item, const OutputPlace& place) {
  return {.pathHash = HashOfPath(place.Path()),
          .size = item.isFolder ? 0 : item.size,
          .nameHash = item.isFolder ? 0 : HashOfName(place.name),
          .isFolder = item.isFolder,
          .outcome = IsSafeItem(item.path, item.name) ? Outcome::kNone : Outcome::kRefused};
}

}  // namespace

std::uint64_t HashOfPath(std::wstring_view path) { return std::hash<std::wstring_view>{}(path); }

std::uint32_t HashOfName(std::wstring_view name) {
  return static_cast<std::uint32_t>(std::hash<std::wstring_view>{}(name));
}

std::optional<OutputPlace> PlaceInRun(const Request& request, const Run& run, const Item& item) {
  const INIUNPACK& settings = request.settings;
  switch (run.kind) {
    case RunKind::kArchive:
      return PlaceInArchiveRun(settings, item.path, item.isFolder, request.target);
    case RunKind::kFolder:
      return PlaceInFolderRun(settings, run.path, item.path, item.isFolder, request.target);
    case RunKind::kFolderFlat:
      if (item.isFolder ||
          !PlaceInFolderRun(settings, run.path, item.path, false, request.target)) {
        return std::nullopt;
      }
      return PlaceOfFile(settings, item.path, request.target);
    case RunKind::kFile:
      if (item.isFolder || item.path != run.path) return std::nullopt;
      return PlaceOfFile(settings, item.path, request.target);
  }
  return std::nullopt;
}

Plan MakePlan(Archive& archive, const Request& request) {
  Plan plan;
  ForEachPlanned(archive, request, [&](const Item& item, const OutputPlace& place) {
    plan.push_back(PlannedOf(item, place));
  });
  return plan;
}

}  // namespace terminal
