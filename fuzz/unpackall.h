// What a host does with an archive, all of it.
#pragma once

#include <string>
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

/// Every item that is begun is ended, once.
class StrictSink : public morvunp::ItemSink {
 public:
  void Begin(const morvunp::RoutedItem&) override {
    Require(!m_bBegun, "one item after the other");
    m_bBegun = true;
  }
  bool Write(const void*, std::size_t) override {
    Require(m_bBegun, "bytes belong to an item");
    return true;
  }
  bool End(const morvunp::ItemReport&) override {
    Require(m_bBegun, "an item ends once");
    m_bBegun = false;
    return true;
  }
  bool IsIdle() const { return !m_bBegun; }

 private:
  bool m_bBegun = false;
};

inline morvunp::UnpackOptions EveryOption() {
  morvunp::UnpackOptions options;
  options.goOn = options.wholeSet = options.safeReplace = options.links = true;
  options.folderFacts = options.owners = options.pumpAlways = options.utf8Names = true;
  options.brokenFiles = morvunp::BrokenFiles::kRemove;
  options.limits.depth = 100;
  options.onMissingVolume = [](const std::wstring& name) -> std::optional<std::wstring> {
    return name;
  };
  return options;
}

/// One pass in which every second item goes to a sink; all are told.
template <class U>
void RouteAll(U& unpacker, const std::wstring& target) {
  StrictSink sink;
  std::size_t wanted = 0;
  std::size_t told = 0;
  unpacker.SetItemReport([&](const morvunp::ItemReport& report) {
    if (report.result != morvunp::ItemResult::kReplaced) ++told;
  });
  unpacker.UnpackItems(target, [&](const morvunp::RoutedItem& item) {
    ++wanted;
    if (item.position % 2 == 0) return morvunp::Route::Into(sink);
    return morvunp::Route::To({target, L"routed" + std::to_wstring(item.position % 4)});
  });
  unpacker.SetItemReport({});
  Require(sink.IsIdle() && told == wanted, "every item is told");
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
  if (manner.asksForMore) unpacker.SetOptions(EveryOption());
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
    host.BeginRun();
    if (manner.asksForMore) RouteAll(unpacker, target);
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
