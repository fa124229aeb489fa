// What a host does with an archive, all of it.
#pragma once

#include <vector>

#include "fuzz/quiethost.h"
#include "fuzz/sandbox.h"
#include "morvunp/morvunp.h"

namespace fuzz {

/// Paths by a walk that reads the whole record of each item; not all of many.
template <class U>
std::vector<std::wstring> SomePathsOf(U& unpacker) {
  constexpr std::size_t kMost = 4000;
  std::vector<std::wstring> paths;
  morvunp::WalkItems<typename U::FullInfo>(unpacker, [&](const typename U::FullInfo& info) {
    typename U::ShortInfo brief;
    Require(unpacker.GetFileShortInfo(brief) && brief.strPath == info.strPath,
            "both records tell of one item");
    paths.push_back(info.strPath);
    return paths.size() < kMost;
  });
  return paths;
}

/// Opens the archive and asks for and unpacks everything there is. The two
/// errors that the contract names may be thrown, no other.
template <class U>
void UnpackAll(const Manner& manner, const std::wstring& archive) {
  constexpr std::size_t kSingles = 4;
  const Sandbox& sandbox = Sandbox::Instance();
  const std::wstring target = sandbox.Target();
  QuietHost host(manner, target);
  U unpacker;
  host.Attach(unpacker);
  unpacker.SetIni(manner.settings);
  try {
    if (!unpacker.OpenArchive(archive)) return;
    const std::vector<std::wstring> paths = SomePathsOf(unpacker);
    unpacker.GetArchiveOutputInfo();
    for (std::size_t i = 0; i < paths.size() && i < kSingles; ++i) {
      host.BeginRun();
      // From both ends: the last items are those that damage is close to.
      const std::wstring& path = i % 2 == 0 ? paths[i / 2] : paths[paths.size() - 1 - i / 2];
      const std::wstring folder = path.substr(0, path.find(L'\\'));
      unpacker.IsFolder(folder);
      unpacker.GetFolderOutputInfo(folder);
      unpacker.GetFileOutputInfo(path);
      unpacker.UnpackFile(path, target);
      unpacker.UnpackFolder(folder, target);
    }
    host.BeginRun();
    unpacker.UnpackArchive(target);
  } catch (const CAtlException&) {
  } catch (const CInvalidArgException&) {
  }
}

/// UnpackAll, with nothing left behind: no descriptor and nothing outside.
template <class U>
void UnpackAllCleanly(const Manner& manner, const std::wstring& archive) {
  const std::size_t open = OpenDescriptors();
  UnpackAll<U>(manner, archive);
  Require(OpenDescriptors() == open, "every file is closed");
  Sandbox::Instance().CheckOutside();
}

}  // namespace fuzz
