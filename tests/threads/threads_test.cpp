// Objects on two threads know nothing of each other: what each thread lists,
// asks and unpacks is what it does alone, with every format at once. A program
// of its own, so that it is quickly built under the thread sanitizer.
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <latch>
#include <stdexcept>

#include "support/archives.h"
#include "support/rooms.h"
#include "support/unpacktest.h"

static std::atomic<int> umaskCalls = 0;

/// In place of the system's, for the engines too.
extern "C" [[gnu::visibility("default")]] mode_t umask(mode_t mask) noexcept {
  ++umaskCalls;
  return static_cast<mode_t>(syscall(SYS_umask, mask));
}

namespace {

using testing::HasSubstr;
using testsupport::DialogAnswer;
using testsupport::Items;
using testsupport::TempFolder;

constexpr int kRounds = 15;
constexpr int kNames = 20;

/// Names that begin like this, the middle one of them large.
Items ItemsNamed(const std::string& start) {
  Items items;
  for (int i = 0; i < kNames; ++i) {
    const std::size_t size = i == kNames / 2 ? 600'000 : 1;
    items.push_back({start + std::to_string(10 + i), std::string(size, 'x')});
  }
  return items;
}

/// An archive of each format. The narrow names are other ones in each code page.
struct Archives {
  Archives() {
    Items narrow = ItemsNamed("\x8E\x9A");
    narrow.push_back({"\x98\xFF", "in neither code page"});
    testsupport::WriteIso(folder.Path("iso"), narrow);
    testsupport::WriteCabinet(folder.Path("cab"), narrow);
    testsupport::WriteRar(folder.Path("rar"), ItemsNamed("\xC3\xA9"));
    testsupport::Write7z(folder.Path("7z"), ItemsNamed("\xC3\xA9"));
  }
  TempFolder folder;
};

/// A user at one thread, who works through the archives and remembers all.
class User {
 public:
  User(const Archives& archives, const char* codePage) : m_archives(archives), m_page(codePage) {}

  /// All that was told, shown and written.
  std::string WorkWithAll() {
    Work<CIsoUnpacker>("iso");
    Work<CCabUnpacker>("cab");
    Work<CRarUnpacker>("rar");
    Work<C7zUnpacker>("7z");
    TellEncrypted();
    return std::move(m_told);
  }

  template <class U>
  void Open(U& unpacker, const std::string& name) {
    EXPECT_TRUE(unpacker.SetOptions({.codePage = m_page}));
    Tell(unpacker.OpenArchive(m_archives.folder.LibraryPath(name)));
  }

  template <class U>
  void List(U& unpacker) {
    morvunp::WalkItems<typename U::FullInfo>(unpacker, [&](const auto& info) {
      Tell(info.strPath);
      return true;
    });
    Tell(unpacker.GetArchiveOutputInfo());
  }

  /// The middle file may go on at first and is then interrupted; then every
  /// file that is there is replaced; at last the host throws.
  template <class U>
  void Unpack(U& unpacker) {
    const TempFolder out;
    testsupport::FakeHost host;
    host.Attach(unpacker);
    unpacker.SetIni({.bConfirmReplace = 1});
    host.messageBoxAnswers = {IDNO, IDYES};
    host.onProgress = [&host] {
      const bool isNamed = !host.progressMessages.back().name.empty();
      if (isNamed && !host.messageBoxAnswers.empty()) host.PostStop();
    };
    Tell(unpacker.UnpackArchive(out.LibraryPath()));
    TellTree(out);
    host.dialogAnswers.assign(kNames + 1, DialogAnswer::Press(testsupport::kYes));
    Tell(unpacker.FindFile() && unpacker.UnpackArchive(out.LibraryPath()));
    TellTree(out);
    TellWhatIsThrown(unpacker, host, out);
    for (const auto& dialog : host.dialogs) Tell(dialog.texts.at(1006));
    for (const auto& box : host.messageBoxes) Tell(box.text);
    for (const auto& [percentage, name] : host.progressMessages) {
      Tell(percentage);
      Tell(name);
    }
    const std::size_t start = out.LibraryPath().size();
    for (const std::wstring& path : host.fileTreePaths) Tell(path.substr(start));
    unpacker.CloseArchive();
  }

  std::string& Told() { return m_told; }

 private:
  template <class U>
  void Work(const std::string& name) {
    U unpacker;
    Open(unpacker, name);
    List(unpacker);
    Unpack(unpacker);
  }

  template <class U>
  void TellWhatIsThrown(U& unpacker, testsupport::FakeHost& host, const TempFolder& out) {
    host.onProgress = [this] { throw std::runtime_error(m_page); };
    unpacker.SetIni({});
    try {
      Tell(unpacker.FindFile() && unpacker.UnpackArchive(out.LibraryPath()));
    } catch (const std::runtime_error& thrown) {
      m_told += thrown.what();
    }
  }

  /// Each thread has its own answer to the engine's question.
  void TellEncrypted() {
    testsupport::FakeHost host;
    const bool isKnown = m_page == "CP932";
    host.dialogAnswers.assign(8, testsupport::TypePassword(isKnown ? L"secret" : L"wrong"));
    host.messageBoxAnswers.assign(8, IDOK);
    const TempFolder out;
    CRarUnpacker unpacker;
    Tell(
        unpacker.OpenArchive(platform::ToLibraryPath(MORVUNP_FIXTURES "/rar/encrypted-files.rar")));
    Tell(unpacker.UnpackArchive(out.LibraryPath()));
    TellTree(out);
    Tell(host.messageBoxes.size());
  }

  void TellTree(const TempFolder& folder) {
    for (const auto& [path, data] : testsupport::TreeOf(folder.Path())) {
      struct stat status {};
      lstat(folder.Path(path).c_str(), &status);
      m_told += path + " " + std::to_string(data.size()) + " ";
      Tell(status.st_mode);
    }
  }
  void Tell(std::size_t number) { m_told += std::to_string(number) + "\n"; }
  void Tell(const std::wstring& text) { m_told += platform::ToNativeText(text) + "\n"; }

  const Archives& m_archives;
  std::string m_page;
  std::string m_told;
};

TEST(Threads, GiveTogetherWhatEachGivesAlone) {
  const Archives archives;
  std::latch start(2);
  const auto work = [&](const char* codePage) {
    std::string alone = User(archives, codePage).WorkWithAll();
    start.arrive_and_wait();
    for (int i = 0; i < kRounds; ++i) {
      const std::string together = User(archives, codePage).WorkWithAll();
      EXPECT_EQ(together, alone);
      if (together != alone) break;
    }
    return alone;
  };
  auto other = std::async(std::launch::async, work, "CP1251");
  const std::string japanese = work("CP932");
  const std::string cyrillic = other.get();
  EXPECT_THAT(japanese, HasSubstr("\xE5\xAD\x97"
                                  "10"));
  EXPECT_THAT(cyrillic, HasSubstr("\xD0\x8B\xD1\x99"
                                  "10"));
}

template <class Step>
void OnAThread(Step step) {
  std::async(std::launch::async, step).get();
}

template <class U>
void ExpectToMove(const Archives& archives, const std::string& name) {
  User still(archives, "CP932");
  {
    U unpacker;
    still.Open(unpacker, name);
    still.List(unpacker);
    still.Unpack(unpacker);
  }
  User moving(archives, "CP932");
  U unpacker;
  OnAThread([&] { moving.Open(unpacker, name); });
  OnAThread([&] { moving.List(unpacker); });
  moving.Unpack(unpacker);
  EXPECT_EQ(moving.Told(), still.Told()) << name;
}

TEST(Threads, MayUseAnObjectInTurn) {
  const Archives archives;
  ExpectToMove<CIsoUnpacker>(archives, "iso");
  ExpectToMove<CCabUnpacker>(archives, "cab");
  ExpectToMove<CRarUnpacker>(archives, "rar");
  ExpectToMove<C7zUnpacker>(archives, "7z");
}

TEST(Threads, HaveTheirOwnCodePagesAndWindows) {
  const Archives archives;
  testsupport::FakeHost host;
  ASSERT_TRUE(platform::SetAnsiCodePage("CP1251"));
  OnAThread([&] {
    EXPECT_EQ(platform::RegisteredUserInterface(), nullptr);
    EXPECT_FALSE(IsWindow(host.progress));
    EXPECT_NE(platform::MakeWindow(nullptr, nullptr), host.progress);
    User user(archives, "");
    CIsoUnpacker unpacker;
    user.Open(unpacker, "iso");
    user.List(unpacker);
    EXPECT_THAT(user.Told(), testing::Not(HasSubstr("\xD0\x8B")));
  });
  platform::SetAnsiCodePage("");
}

// The umask is the process's: whoever sets it to look at it, or for a moment,
// changes the files that other threads create.
TEST(Threads, FindTheUmaskAsItIs) {
  const Archives archives;
  User(archives, "CP932").WorkWithAll();
  const int before = umaskCalls;
  EXPECT_GT(before, 0) << "the engines look at it when they are first used";
  User(archives, "CP932").WorkWithAll();
  EXPECT_EQ(umaskCalls, before);
}

// Messages that are pumped while one object works may use another one.
TEST(Threads, ServeObjectsOfDifferentCodePages) {
  const Archives archives;
  testsupport::FakeHost host;
  CCabUnpacker unpacker;
  EXPECT_FALSE(unpacker.SetOptions({.codePage = "NO-SUCH-PAGE"}));
  EXPECT_FALSE(unpacker.SetOptions({.codePage = "UTF-16"}));
  ASSERT_TRUE(unpacker.SetOptions({.codePage = "CP932"}));
  ASSERT_TRUE(unpacker.OpenArchive(archives.folder.LibraryPath("cab")) && unpacker.FindFile());
  std::vector<std::wstring> names;
  host.onPendingEvents = [&] {
    CCabUnpacker inner;
    EXPECT_TRUE(names.empty() || inner.SetOptions({.codePage = "CP1251"}));
    EXPECT_TRUE(inner.OpenArchive(archives.folder.LibraryPath("cab")) && inner.FindFile());
    CABFILESHORTINFO info;
    inner.FindNextFile();
    EXPECT_TRUE(inner.GetFileShortInfo(info));
    names.push_back(info.strPath);
  };
  const TempFolder out;
  unpacker.SetHandleDialogProgress(host.progress);
  EXPECT_TRUE(unpacker.UnpackArchive(out.LibraryPath()));
  ASSERT_GE(names.size(), 2U);
  EXPECT_EQ(names[0],
            L"\u017D\u0161"
            L"10")
      << "as in the thread's";
  EXPECT_EQ(names[1],
            L"\u040B\u0459"
            L"10");
  EXPECT_TRUE(
      testsupport::Exists(out.Path("\xE5\xAD\x97"
                                   "29")));
}

}  // namespace
