#include "hosts/common/plan.h"

#include <functional>

namespace host {
namespace {

/// Knows which items the library refuses: those with an unsafe name, and all
/// that lies in a folder with one.
class RefusalWatch {
 public:
  bool IsRefused(const Item& item) {
    const bool isBelow = !folder_.empty() && item.path.starts_with(folder_);
    const bool isRefused = isBelow || !IsSafeItem(item.path, item.name);
    if (isRefused && !isBelow && item.isFolder) folder_ = item.path + L'\\';
    return isRefused;
  }

 private:
  /// The refused folder seen last, with a separator behind it.
  std::wstring folder_;
};

PlannedItem PlannedOf(const Item& item, const OutputPlace& place, bool isRefused) {
  return {.pathHash = HashOfPath(place.Path()),
          .size = item.isFolder ? 0 : item.size,
          .nameHash = item.isFolder ? 0 : HashOfName(place.name),
          .isFolder = item.isFolder,
          .outcome = isRefused ? Outcome::kRefused : Outcome::kNone,
          .crc = item.crc};
}

std::function<SevenZipVerdict()> VerdictOf(Archive& archive) {
  return WithUnpacker(archive, [](auto& unpacker) -> std::function<SevenZipVerdict()> {
    if constexpr (requires { unpacker.GetLastVerdict(); }) {
      return [&unpacker] { return unpacker.GetLastVerdict(); };
    }
    return {};
  });
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
    case RunKind::kFiles:
      if (item.isFolder || !run.files.contains(item.path)) return std::nullopt;
      return PlaceOfFile(settings, item.path, request.target);
  }
  return std::nullopt;
}

Plan MakePlan(Archive& archive, const Request& request) {
  Plan plan;
  plan.lastVerdict = VerdictOf(archive);
  RefusalWatch refusals;
  for (const Run& run : request.runs) {
    ForEachInRun(archive, request, run, [&](const Item& item, const OutputPlace& place) {
      plan.items.push_back(PlannedOf(item, place, refusals.IsRefused(item)));
    });
    plan.runEnds.push_back(plan.items.size());
  }
  return plan;
}

}  // namespace host
