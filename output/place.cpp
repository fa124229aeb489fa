#include "morvunp/outputplace.h"

#include "frame/itempath.h"
#include "output/root.h"

namespace frame = morvunp::frame;

namespace {

using frame::Join;
using frame::NameOf;
using frame::ParentOf;

/// Place of an item that keeps `relative` under the target folder.
morvunp::OutputPlace PlaceUnder(const std::wstring& target, std::wstring_view relative,
                                bool isFolder) {
  if (isFolder) return {Join(target, relative), {}};
  if (!frame::HasParent(relative)) return {target, std::wstring(relative)};
  return {Join(target, ParentOf(relative)), std::wstring(NameOf(relative))};
}

}  // namespace

std::wstring morvunp::OutputPlace::Path() const {
  return name.empty() ? folder : Join(folder, name);
}

morvunp::OutputPlace morvunp::PlaceOfFile(const INIUNPACK& settings, const std::wstring& path,
                                          const std::wstring& target) {
  if (settings.bUnpackFileNoPath != 0) return {target, std::wstring(NameOf(path))};
  return PlaceUnder(target, path, false);
}

std::optional<morvunp::OutputPlace> morvunp::PlaceInFolderRun(const INIUNPACK& settings,
                                                              const std::wstring& folder,
                                                              const std::wstring& path,
                                                              bool isFolder,
                                                              const std::wstring& target) {
  if (!path.starts_with(folder)) return std::nullopt;
  const bool below = path.size() > folder.size() && path[folder.size()] == frame::kSeparator;
  const bool itself = isFolder && path.size() == folder.size();
  if (!below && !itself) return std::nullopt;
  std::wstring_view relative = path;
  if (settings.bUnpackFolderRelative != 0 && frame::HasParent(folder)) {
    relative.remove_prefix(ParentOf(folder).size() + 1);
  }
  return PlaceUnder(target, relative, isFolder);
}

std::optional<morvunp::OutputPlace> morvunp::PlaceInArchiveRun(const INIUNPACK& settings,
                                                               const std::wstring& path,
                                                               bool isFolder,
                                                               const std::wstring& target) {
  if (settings.bUnpackArchiveNoPaths == 0) return PlaceUnder(target, path, isFolder);
  if (isFolder) return std::nullopt;
  return morvunp::OutputPlace{target, std::wstring(NameOf(path))};
}

bool morvunp::MakeOutputFolder(const std::wstring& folder, const std::wstring& target) {
  morvunp::CUnpackState state;
  return output::Root(state, target, [](const std::wstring&) {}).MakeFolder(folder);
}
