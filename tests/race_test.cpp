// A second process at work below the target folder: folders and symbolic links
// change places while archives of all formats are unpacked there.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <set>
#include <thread>

#include "support/formats.h"
#include "support/unpacktest.h"

namespace {

namespace fs = std::filesystem;
using morvunp::ItemReason;
using morvunp::ItemResult;
using testsupport::Items;

/// Puts a link to `outside` in the place of `folder` and takes it away again,
/// until it goes. What was there gets another name in the same parent.
class Swapper {
 public:
  Swapper(std::string folder, std::string outside)
      : m_thread([this, folder = std::move(folder), outside = std::move(outside)] {
          for (int i = 0; !m_bEnd; ++i) {
            const std::string away = folder + ".away" + std::to_string(i);
            if (rename(folder.c_str(), away.c_str()) != 0) continue;
            m_nSwaps += symlink(outside.c_str(), folder.c_str()) == 0 ? 1 : 0;
            std::this_thread::yield();
            unlink(folder.c_str());
            rename(away.c_str(), folder.c_str());
          }
        }) {}
  ~Swapper() {
    m_bEnd = true;
    m_thread.join();
  }
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;

  int Swaps() const { return m_nSwaps; }

 private:
  std::atomic<bool> m_bEnd = false;
  std::atomic<int> m_nSwaps = 0;
  std::thread m_thread;
};

template <class F>
class Race : public testsupport::UnpackTest<typename F::Unpacker> {
 protected:
  static constexpr int kFiles = 300;

  /// Names of the files that lie anywhere below the target.
  std::set<std::string> NamesBelowTarget() const {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(this->folder.Path("out"))) {
      if (entry.is_regular_file()) names.insert(entry.path().filename());
    }
    return names;
  }

  /// What is told of an item that a swap hit.
  static bool IsTrue(const morvunp::ItemReport& report) {
    if (report.result == ItemResult::kWritten || report.result == ItemResult::kFolderMade) {
      return true;
    }
    // Engines that are asked for a whole run end it where a file cannot be made.
    if (report.result == ItemResult::kNotReached) return true;
    return report.result == ItemResult::kFailed &&
           (report.reason == ItemReason::kInTheWay ||
            (report.reason == ItemReason::kSystem && report.systemError == ENOENT));
  }
};

TYPED_TEST_SUITE(Race, testsupport::Formats, testsupport::FormatNames);

TYPED_TEST(Race, NothingIsWrittenThroughALinkAndEveryItemIsTold) {
  const std::string outside = this->folder.Path("outside");
  fs::create_directory(outside);
  Items items;
  // Two folders in turn, so that each is entered anew and again.
  for (int i = 0; i < this->kFiles; ++i) {
    items.push_back({(i / 3 % 2 == 0 ? "D/" : "D/SUB/") + std::to_string(1000 + i), "data"});
  }
  TypeParam::kWrite(this->folder.Path("x"), items);
  ASSERT_TRUE(this->Open());
  ASSERT_TRUE(this->unpacker.FindFile());
  std::map<ULONGLONG, ItemResult> results;
  std::set<std::string> written;
  this->unpacker.SetItemReport([&](const morvunp::ItemReport& report) {
    results[report.position] = report.result;
    EXPECT_TRUE(this->IsTrue(report))
        << static_cast<int>(report.result) << ' ' << static_cast<int>(report.reason) << ' '
        << report.systemError;
    const std::wstring_view name = report.path.substr(report.path.rfind(L'\\') + 1);
    if (report.result == ItemResult::kWritten) written.insert({name.begin(), name.end()});
  });
  this->Set({});
  fs::create_directories(this->folder.Path("out/D"));
  int swaps = 0;
  // The first run finds nothing, later ones replace.
  for (int run = 0; run < 4; ++run) {
    results.clear();
    written.clear();
    {
      Swapper swapper(this->folder.Path("out/D"), outside);
      this->unpacker.UnpackArchive(this->Target());
      swaps += swapper.Swaps();
    }
    EXPECT_GE(results.size(), items.size());
    const std::set<std::string> names = this->NamesBelowTarget();
    EXPECT_TRUE(std::includes(names.begin(), names.end(), written.begin(), written.end()));
  }
  EXPECT_GT(swaps, 0);
  EXPECT_TRUE(fs::is_empty(outside)) << "something was written through a link";
}

}  // namespace
