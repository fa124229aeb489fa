#include "selection.h"

#include <algorithm>

#include "morvunp/platform/text.h"

namespace terminal {
namespace {

/// How well an item fits a path; a higher one wins.
enum Fit { kNone, kBeneathIgnoringCase, kItemIgnoringCase, kBeneath, kItem };

struct Search {
  std::wstring path;
  Fit fit = kNone;
  Selection found{};
};

std::wstring WantedPath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  while (path.starts_with("./")) path.erase(0, 2);
  while (path.ends_with('/')) path.pop_back();
  return morvunp::platform::ToLibraryPath(path);
}

/// Compares the first characters of `path` with all of `wanted`.
Fit CompareBeginning(const std::wstring& path, const std::wstring& wanted, Fit exact,
                     Fit ignoringCase) {
  if (path.compare(0, wanted.size(), wanted) == 0) return exact;
  const bool isSame = _wcsicmp(path.substr(0, wanted.size()).c_str(), wanted.c_str()) == 0;
  return isSame ? ignoringCase : kNone;
}

Fit FitOf(const std::wstring& path, const std::wstring& wanted) {
  const std::size_t length = wanted.size();
  if (length == 0 || path.size() < length) return kNone;
  if (path.size() == length) return CompareBeginning(path, wanted, kItem, kItemIgnoringCase);
  if (path[length] != L'\\') return kNone;
  return CompareBeginning(path, wanted, kBeneath, kBeneathIgnoringCase);
}

void Consider(Search& search, const host::Item& item) {
  if (search.fit == kItem) return;
  const Fit fit = FitOf(item.path, search.path);
  if (fit <= search.fit) return;
  search.fit = fit;
  const bool isBeneath = item.path.size() > search.path.size();
  search.found = {item.path.substr(0, search.path.size()), isBeneath || item.isFolder};
}

}  // namespace

std::vector<std::optional<Selection>> FindSelections(host::Archive& archive,
                                                     const std::vector<std::string>& paths) {
  std::vector<Search> searches;
  for (const std::string& path : paths) searches.push_back({.path = WantedPath(path)});
  host::ForEachItem(archive, [&](const host::Item& item) {
    for (Search& search : searches) Consider(search, item);
    return true;
  });
  std::vector<std::optional<Selection>> selections;
  for (Search& search : searches) {
    selections.emplace_back(search.fit != kNone ? std::optional(std::move(search.found))
                                                : std::nullopt);
  }
  return selections;
}

}  // namespace terminal
