#include "hosts/common/plan.h"

namespace host {
std::optional<morvunp::OutputPlace> PlaceInRun(const Request& request, const Run& run,
                                               const Item& item) {
  const INIUNPACK& settings = request.settings;
  switch (run.kind) {
    case RunKind::kArchive:
      return morvunp::PlaceInArchiveRun(settings, item.path, item.isFolder, request.target);
    case RunKind::kFolder:
      return morvunp::PlaceInFolderRun(settings, run.path, item.path, item.isFolder,
                                       request.target);
    case RunKind::kFolderFlat:
      if (item.isFolder ||
          !morvunp::PlaceInFolderRun(settings, run.path, item.path, false, request.target)) {
        return std::nullopt;
      }
      return morvunp::PlaceOfFile(settings, item.path, request.target);
    case RunKind::kFile:
      if (item.isFolder || item.path != run.path) return std::nullopt;
      return morvunp::PlaceOfFile(settings, item.path, request.target);
    case RunKind::kFiles:
      if (item.isFolder || !run.files.contains(item.path)) return std::nullopt;
      return morvunp::PlaceOfFile(settings, item.path, request.target);
  }
  return std::nullopt;
}

Plan MakePlan(Archive& archive, const Request& request) {
  Plan plan;
  for (const Run& run : request.runs) {
    ForEachInRun(archive, request, run, [&](const Item& item, const morvunp::OutputPlace&) {
      plan.items.push_back({.position = item.position,
                            .size = item.isFolder ? 0 : item.size,
                            .isFolder = item.isFolder});
    });
    plan.runEnds.push_back(plan.items.size());
  }
  return plan;
}

}  // namespace host
