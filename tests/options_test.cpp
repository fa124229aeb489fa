// What the options of a run change, in all formats: what is left of broken
// files and of those that they were to replace, who is asked about existing
// files, and how much may come out.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "support/bytes.h"
#include "support/countingsink.h"
#include "support/formats.h"
#include "support/rarbuilder.h"
#include "support/unpacktest.h"

namespace {

using morvunp::BrokenFiles;
using morvunp::ItemReason;
using morvunp::ItemResult;
using morvunp::UnpackOptions;
using testing::ElementsAre;
using testing::Pair;
using testsupport::CountingSink;
using testsupport::Items;
using testsupport::WriteFile;

/// What no method packs, so that it lies in the midst of every archive as it is.
std::string Noise() {
  std::mt19937 numbers(1);
  std::string bytes(600'000, '\0');
  for (char& byte : bytes) byte = static_cast<char>(numbers());
  return bytes;
}

/// Long enough for every engine to tell of it before its end.
const std::string kLong = testsupport::Pattern(9'000'000);

/// The rights of a user who is not root, who may do anything.
class Unprivileged {
 public:
  Unprivileged() {
    if (m_bRoot && (setegid(kNobody) != 0 || seteuid(kNobody) != 0))
      throw std::runtime_error("seteuid");
  }
  ~Unprivileged() {
    if (m_bRoot && (seteuid(0) != 0 || setegid(m_nGroup) != 0)) std::abort();
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

  /// Makes a file or folder that user's.
  static void Give(const std::string& path) {
    if (geteuid() == 0 && chown(path.c_str(), kNobody, kNobody) != 0) {
      throw std::runtime_error("chown");
    }
  }

 private:
  static constexpr uid_t kNobody = 65534;
  const bool m_bRoot = geteuid() == 0;
  const gid_t m_nGroup = getegid();
};

template <class F>
class Options : public testsupport::UnpackTest<typename F::Unpacker> {
 protected:
  using Unpacker = typename F::Unpacker;
  static constexpr bool kIsImage = std::is_same_v<Unpacker, CIsoUnpacker>;
  static constexpr bool kIsCabinet = std::is_same_v<Unpacker, CCabUnpacker>;
#if MORVUNP_HAS_RAR
  static constexpr bool kIsRar = std::is_same_v<Unpacker, CRarUnpacker>;
#else
  static constexpr bool kIsRar = false;
#endif

  void Make(const Items& items) {
    F::kWrite(this->folder.Path("x"), items);
    Reopen();
  }
  void Reopen() {
    ASSERT_TRUE(this->Open());
    ASSERT_TRUE(this->unpacker.FindFile());
    this->Set({});
    this->Listen();
  }
  /// BIG cannot be had whole.
  void MakeBroken() {
    Make({{"A", "a"}, {"BIG", noise}});
    std::string archive = testsupport::ReadFile(this->folder.Path("x"));
    if (kIsImage) {
      archive.resize(archive.rfind(noise.substr(noise.size() / 3 * 2, 100)));
    } else {
      archive[archive.size() / 2] ^= 1;
    }
    WriteFile(this->folder.Path("x"), archive);
    Reopen();
  }
  void Choose(const UnpackOptions& options) { ASSERT_TRUE(this->unpacker.SetOptions(options)); }
  /// The engine for RAR shows that a file is damaged.
  void RunOverDamage() {
    if (kIsRar) this->host.messageBoxAnswers.push_back(IDOK);
    this->told.clear();
    this->unpacker.UnpackArchive(this->Target());
  }
  const typename testsupport::UnpackTest<Unpacker>::Told& ToldOf(const std::wstring& path) const {
    // Cabinets tell of a folder with a separator at its end.
    const auto found = std::find_if(this->told.begin(), this->told.end(), [&](const auto& report) {
      return report.path == path || report.path == path + L"\\";
    });
    if (found == this->told.end()) throw std::out_of_range("not told");
    return *found;
  }

  const std::string noise = Noise();
};

TYPED_TEST_SUITE(Options, testsupport::Formats, testsupport::FormatNames);

TYPED_TEST(Options, ABrokenFileIsRemovedOrKeptAsWanted) {
  this->MakeBroken();
  const struct {
    BrokenFiles wanted;
    bool stays;
  } cases[] = {{BrokenFiles::kRemove, false},
               {BrokenFiles::kKeep, true},
               {BrokenFiles::kAsFormat, !this->kIsRar}};
  for (const auto& [wanted, stays] : cases) {
    SCOPED_TRACE(static_cast<int>(wanted));
    this->Choose({.brokenFiles = wanted});
    this->RunOverDamage();
    EXPECT_EQ(this->Out("A"), "a");
    EXPECT_EQ(this->Names().size(), stays ? 2U : 1U);
    EXPECT_EQ(this->ToldOf(L"BIG").result, ItemResult::kFailed);
    EXPECT_EQ(this->ToldOf(L"BIG").reason,
              this->kIsImage ? ItemReason::kCutShort : ItemReason::kDamaged);
    EXPECT_TRUE(!stays || (this->Out("BIG") != this->noise && !this->Out("BIG").empty()));
    std::filesystem::remove(this->folder.Path("out/BIG"));
  }
}

TYPED_TEST(Options, NothingIsKeptOfAFileThatWasInterrupted) {
  this->Make({{"A", "a"}, {"BIG", kLong}});
  this->Choose({.brokenFiles = BrokenFiles::kKeep});
  this->StopIn(L"BIG", {IDYES});
  this->unpacker.UnpackArchive(this->Target());
  EXPECT_THAT(this->Names(), ElementsAre("A"));
  EXPECT_EQ(this->ToldOf(L"BIG").reason, ItemReason::kInterrupted);
  this->host.onProgress = [&] {
    if (testsupport::Exists(this->folder.Path("out/BIG"))) throw std::runtime_error("enough");
  };
  EXPECT_THROW(this->unpacker.UnpackArchive(this->Target()), std::runtime_error);
  EXPECT_THAT(this->Names(), ElementsAre("A"));
}

TYPED_TEST(Options, AnExistingFileGivesWayToAWholeOneAtOnce) {
  this->Make({{"BIG", kLong}});
  const std::string big = this->folder.Path("out/BIG");
  WriteFile(big, "old");
  ASSERT_EQ(chmod(big.c_str(), 0640), 0);
  this->Choose({.safeReplace = true});
  int looks = 0;
  this->host.onProgress = [&] {
    const std::string seen = testsupport::ReadFile(big);
    EXPECT_TRUE(seen == "old" || seen == kLong);
    looks += seen == "old" ? 1 : 0;
  };
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_GT(looks, 1);
  EXPECT_TRUE(this->Out() == (std::map<std::string, std::string>{{"BIG", kLong}}));
  const bool hasMode = !this->kIsImage && !this->kIsCabinet;
  EXPECT_EQ(this->StatusOf("BIG").st_mode & 07777, hasMode ? 0644U : 0640U);
  EXPECT_EQ(this->StatusOf("BIG").st_mtime, testsupport::kItemTime);
  EXPECT_FALSE(this->ToldOf(L"BIG").wasInPlace);
}

TYPED_TEST(Options, WhatFailsCostsNoExistingFile) {
  const std::map<std::string, std::string> before{{"A", "a"}, {"BIG", "old"}};
  WriteFile(this->folder.Path("out/BIG"), "old");
  this->MakeBroken();
  for (const BrokenFiles broken :
       {BrokenFiles::kAsFormat, BrokenFiles::kKeep, BrokenFiles::kRemove}) {
    this->Choose({.brokenFiles = broken, .safeReplace = true});
    this->RunOverDamage();
    EXPECT_TRUE(this->Out() == before) << "damage";
    EXPECT_EQ(this->ToldOf(L"BIG").result, ItemResult::kFailed);
  }

  this->Make({{"A", "a"}, {"BIG", kLong}});
  this->StopIn(L"BIG", {IDYES});
  this->unpacker.UnpackArchive(this->Target());
  EXPECT_TRUE(this->Out() == before) << "interruption";
  EXPECT_EQ(this->ToldOf(L"BIG").reason, ItemReason::kInterrupted);

  signal(SIGXFSZ, SIG_IGN);
  rlimit saved{};
  getrlimit(RLIMIT_FSIZE, &saved);
  const rlimit full{300'000, saved.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  this->told.clear();
  this->unpacker.UnpackArchive(this->Target());
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_TRUE(this->Out() == before) << "no room";
  EXPECT_EQ(this->ToldOf(L"BIG").systemError, EFBIG);
}

TYPED_TEST(Options, TheHostsFunctionDecidesAboutExistingFiles) {
  using What = morvunp::ExistingFileAnswer::What;
  this->Make({{"A", "new a"}, {"B", "new b"}, {"C", "new c"}, {"D", "new d"}});
  for (const char* name : {"A", "B", "C", "D"}) WriteFile(this->folder.Path("out/") + name, "old");
  this->Set({.bConfirmReplace = 1});
  std::vector<morvunp::ExistingFileAnswer> answers{{What::kKeep}, {What::kWrite}, {What::kCancel}};
  std::size_t asked = 0;
  this->Choose({.onExistingFile = [&](const auto&) { return answers.at(asked++); }});
  EXPECT_FALSE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_THAT(this->Out(), ElementsAre(Pair("A", "old"), Pair("B", "new b"), Pair("C", "old"),
                                       Pair("D", "old")));
  EXPECT_EQ(asked, 3U);
  EXPECT_EQ(this->ToldOf(L"A").result, ItemResult::kKept);
  EXPECT_EQ(this->ToldOf(L"A").reason, ItemReason::kNone);
  EXPECT_EQ(this->ToldOf(L"C").reason, ItemReason::kInterrupted);
  EXPECT_EQ(this->ToldOf(L"D").result, ItemResult::kNotReached);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kInterrupted, L"")));
  EXPECT_TRUE(this->host.dialogs.empty());

  this->Choose({.onExistingFile = [&](const auto&) -> morvunp::ExistingFileAnswer {
    throw std::runtime_error("enough");
  }});
  EXPECT_THROW(this->unpacker.UnpackArchive(this->Target()), std::runtime_error);
  EXPECT_EQ(this->Out("D"), "old");
}

TYPED_TEST(Options, AFileComesOutUnderAnotherNameThatIsFree) {
  this->Make({{"D/A", "new a"}});
  const auto walk = this->Positions();
  WriteFile(this->folder.Path("out/D/A"), "old");
  WriteFile(this->folder.Path("out/D/A (2)"), "older");
  const std::wstring d = this->Target() + L"\\D\\";
  std::vector<std::wstring> asked;
  this->Choose({.onExistingFile = [&](const morvunp::ExistingFile& file) {
    asked.emplace_back(file.outputPath);
    EXPECT_EQ(file.size, asked.size() == 1 ? 3U : 5U);
    EXPECT_EQ(walk.at(file.position), L"D\\A");
    EXPECT_EQ(file.itemPath, L"D\\A");
    EXPECT_EQ(file.itemSize, 5U);
    EXPECT_EQ(file.itemModified, testsupport::kItemTime);
    EXPECT_EQ(file.attributes, DWORD{FILE_ATTRIBUTE_NORMAL});
    return morvunp::ExistingFileAnswer{morvunp::ExistingFileAnswer::What::kOtherName,
                                       asked.size() == 1 ? L"A (2)" : L"A (3)"};
  }});
  for (const bool isAlone : {false, true}) {
    asked.clear();
    this->Listen();
    EXPECT_TRUE(isAlone ? this->Unpack(L"D\\A") : this->Unpack());
    EXPECT_THAT(asked, ElementsAre(d + L"A", d + L"A (2)"));
    EXPECT_THAT(this->Out(), ElementsAre(Pair("D/", ""), Pair("D/A", "old"),
                                         Pair("D/A (2)", "older"), Pair("D/A (3)", "new a")));
    EXPECT_EQ(this->ToldOf(L"D\\A").outputPath, d + L"A (3)");
    EXPECT_THAT(this->host.fileTreePaths, testing::Contains(d + L"A (3)"));
    std::filesystem::remove(this->folder.Path("out/D/A (3)"));
  }
}

TYPED_TEST(Options, AnotherNamePassesTheGate) {
  this->Make({{"A", "evil"}, {"B", "good"}});
  WriteFile(this->folder.Path("out/A"), "old");
  WriteFile(this->folder.Path("out/C/X"), "old");
  ASSERT_EQ(symlink("C/X", this->folder.Path("out/LINK").c_str()), 0);
  const auto before = testsupport::TreeOf(this->folder.Path());
  const struct {
    std::wstring name;
    ItemReason reason{};
  } cases[] = {{L"", ItemReason::kUnsafeName},
               {L"..", ItemReason::kUnsafeName},
               {L"C\\Y", ItemReason::kUnsafeName},
               {L"C/Y", ItemReason::kUnsafeName},
               {L"C:Y", ItemReason::kUnsafeName},
               {L"..\\Y", ItemReason::kUnsafeName},
               {L"C", ItemReason::kInTheWay},
               {L"LINK", ItemReason::kInTheWay},
               {std::wstring(300, L'n'), ItemReason::kNameTooLong}};
  for (const auto& [name, reason] : cases) {
    this->Choose({.onExistingFile = [&name = name](const auto&) {
      return morvunp::ExistingFileAnswer{morvunp::ExistingFileAnswer::What::kOtherName, name};
    }});
    this->Listen();
    this->Unpack();
    EXPECT_EQ(this->ToldOf(L"A").reason, reason) << testing::PrintToString(name);
    std::filesystem::remove(this->folder.Path("out/B"));
    EXPECT_EQ(testsupport::TreeOf(this->folder.Path()), before) << testing::PrintToString(name);
  }
}

TYPED_TEST(Options, NobodyIsAskedAboutWhatCannotBeReplaced) {
  this->Make({{"FOLDER", "evil"}, {"LINK", "evil"}, {"x", "evil"}});
  mkdir(this->folder.Path("FOLDER").c_str(), 0777);
  ASSERT_EQ(symlink("FOLDER", this->folder.Path("LINK").c_str()), 0);
  const auto before = testsupport::TreeOf(this->folder.Path());
  this->Choose({.onExistingFile = [](const auto&) {
    ADD_FAILURE() << "asked";
    return morvunp::ExistingFileAnswer{morvunp::ExistingFileAnswer::What::kWrite};
  }});
  this->unpacker.UnpackArchive(this->folder.LibraryPath());
  EXPECT_TRUE(testsupport::TreeOf(this->folder.Path()) == before);
  for (const auto& report : this->told) EXPECT_EQ(report.reason, ItemReason::kInTheWay);
  EXPECT_EQ(this->told.size(), 3U);
}

TYPED_TEST(Options, NoMoreBytesComeOutThanAllowed) {
  this->Make({{"A", "12345"}, {"BIG", kLong}, {"C", "c"}});
  const ULONGLONG all = 5 + kLong.size() + 1;
  for (const bool isKept : {false, true}) {
    this->Choose({.brokenFiles = isKept ? BrokenFiles::kKeep : BrokenFiles::kAsFormat,
                  .limits = {.bytes = 1'000'000}});
    this->Listen();
    EXPECT_FALSE(this->Unpack());
    EXPECT_EQ(this->Out("A"), "12345");
    EXPECT_EQ(this->Names().size(), isKept ? 2U : 1U);
    EXPECT_TRUE(!isKept || this->Out("BIG").size() <= 1'000'000 - 5);
    EXPECT_EQ(this->ToldOf(L"BIG").result, ItemResult::kFailed);
    EXPECT_EQ(this->ToldOf(L"BIG").reason, ItemReason::kLimit);
    EXPECT_EQ(this->ToldOf(L"C").result, ItemResult::kNotReached);
    EXPECT_EQ(this->ToldOf(L"C").reason, ItemReason::kLimit);
    EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kLimit, L"")));
  }
  std::filesystem::remove(this->folder.Path("out/BIG"));

  CountingSink sink;
  this->Listen();
  EXPECT_FALSE(this->unpacker.UnpackItems(
      this->Target(), [&](const morvunp::RoutedItem&) { return morvunp::Route::Into(sink); }));
  EXPECT_EQ(sink.items, 2U);
  EXPECT_LE(sink.bytes, 1'000'000U);
  EXPECT_EQ(sink.last, ItemReason::kLimit);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kLimit, L"")));

  this->Choose({.limits = {.bytes = all - 1}});
  this->Unpack();
  EXPECT_THAT(this->Names(), ElementsAre("A", "BIG"));
  this->Choose({.limits = {.bytes = all}});
  EXPECT_TRUE(this->Unpack());
  EXPECT_THAT(this->Names(), ElementsAre("A", "BIG", "C"));
}

TYPED_TEST(Options, NoMoreItemsAreBegunThanAllowed) {
  this->Make({{"A", "a"}, {"B", "b"}, {"C", "c"}, {"D", "d"}});
  this->Choose({.limits = {.items = 2}});
  EXPECT_FALSE(this->Unpack());
  EXPECT_THAT(this->Names(), ElementsAre("A", "B"));
  EXPECT_EQ(this->ToldOf(L"C").result, ItemResult::kFailed);
  EXPECT_EQ(this->ToldOf(L"C").reason, ItemReason::kLimit);
  EXPECT_EQ(this->ToldOf(L"D").result, ItemResult::kNotReached);
  EXPECT_EQ(this->told.size(), 4U);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kLimit, L"")));

  CountingSink sink;
  EXPECT_FALSE(this->unpacker.UnpackItems(
      this->Target(), [&](const morvunp::RoutedItem&) { return morvunp::Route::Into(sink); }));
  EXPECT_EQ(sink.items, 2U);
  this->Choose({.limits = {.items = 4}});
  EXPECT_TRUE(this->Unpack());
  EXPECT_EQ(this->Names().size(), 4U);
}

TYPED_TEST(Options, NothingComesOutDeeperThanAllowed) {
  this->Make({{"A", "a"}, {"D/B", "b"}, {"D/E/C", "c"}});
  this->Choose({.limits = {.depth = 2}});
  EXPECT_TRUE(this->Unpack());
  EXPECT_EQ(this->Out("D/E/C"), "c");
  std::filesystem::remove_all(this->folder.Path("out/D"));
  this->Choose({.limits = {.depth = 1}});
  this->Listen();
  this->Unpack();
  EXPECT_EQ(this->Out("D/B"), "b");
  EXPECT_FALSE(testsupport::Exists(this->folder.Path("out/D/E/C")));
  EXPECT_EQ(this->ToldOf(L"D\\E\\C").reason, ItemReason::kLimit);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kLimit, L"")));

  this->Make({{"D/"}, {"D/E/"}, {"D/E/F/"}});
  this->Unpack();
  EXPECT_EQ(this->ToldOf(L"D\\E\\F").reason, ItemReason::kLimit);
  EXPECT_TRUE(testsupport::Exists(this->folder.Path("out/D/E")));
  EXPECT_FALSE(testsupport::Exists(this->folder.Path("out/D/E/F")));
}

TYPED_TEST(Options, FoldersHaveTheirTimesWhenAllIsWritten) {
  Items items{{"D/"}, {"D/A", "a"}, {"D/E/"}, {"D/E/B", "b"}, {"F/"}, {"F/C", kLong}, {"G/"}};
  this->Make(items);
  const auto isDated = [&](const char* name) {
    return this->StatusOf(name).st_mtime == testsupport::kItemTime;
  };
  EXPECT_TRUE(this->Unpack());
  for (const char* name : {"D", "D/E", "F", "G"}) EXPECT_FALSE(isDated(name)) << name;
  const struct stat target = this->StatusOf("");
  this->Choose({.folderFacts = true});
  // Over folders that exist, and into new ones.
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(this->Unpack());
    for (const char* name : {"D", "D/E", "F", "G"}) {
      EXPECT_EQ(isDated(name), !this->kIsCabinet) << name;
    }
    std::filesystem::remove_all(this->folder.Path("out/D"));
  }
  EXPECT_NE(this->StatusOf("").st_mtime, testsupport::kItemTime);
  EXPECT_EQ(this->StatusOf("").st_mode, target.st_mode);

  // Told when all has its time, and given also where the run ends early.
  std::filesystem::remove_all(this->folder.Path("out/D"));
  bool wasDated = false;
  this->unpacker.SetItemReport({}, [&](const morvunp::RunReport&) { wasDated = isDated("D/E"); });
  this->StopIn(L"C", {IDYES});
  EXPECT_FALSE(this->Unpack());
  const bool isReached = testsupport::Exists(this->folder.Path("out/D/E"));
  EXPECT_TRUE(!isReached || this->kIsCabinet || wasDated);
  std::filesystem::remove_all(this->folder.Path("out/D"));
  this->host.onProgress = [&] {
    if (this->host.progressMessages.back().name == L"C") throw std::runtime_error("enough");
  };
  EXPECT_THROW(this->Unpack(), std::runtime_error);
  EXPECT_EQ(isDated("D/E"), !this->kIsCabinet);
}

TYPED_TEST(Options, FactsOfAFolderNeverReachWhatTookItsPlace) {
  this->Make({{"D/"}, {"D/A", "a"}, {"E/"}, {"E/B", "b"}});
  const std::string outside = this->folder.Path("outside");
  mkdir(outside.c_str(), 0700);
  const std::string d = this->folder.Path("out/D");
  this->Choose({.folderFacts = true});
  bool isSwapped = false;
  this->unpacker.SetItemReport(
      [&](const morvunp::ItemReport& report) {
        if (isSwapped || report.path != L"E\\B") return;
        isSwapped =
            rename(d.c_str(), (d + "2").c_str()) == 0 && symlink("../outside", d.c_str()) == 0;
      },
      {});
  this->Unpack();
  EXPECT_TRUE(isSwapped);
  const auto status = std::filesystem::status(outside);
  EXPECT_EQ(status.permissions(), std::filesystem::perms{0700});
  struct stat after {};
  stat(outside.c_str(), &after);
  EXPECT_NE(after.st_mtime, testsupport::kItemTime);
}

#if MORVUNP_HAS_RAR
class RarOptions : public testsupport::UnpackTest<CRarUnpacker> {};

TEST_F(RarOptions, WhatRepeatsAFileFindsItUnderItsOtherName) {
  using What = morvunp::ExistingFileAnswer::What;
  testsupport::RarBuilder builder;
  builder.Add({.path = "A", .data = "data"});
  builder.Add({.path = "LINK", .redirection = 4, .redirectsTo = "A"});
  builder.Add({.path = "COPY", .redirection = 5, .redirectsTo = "A"});
  ASSERT_TRUE(OpenBytes(builder.Build()));
  WriteFile(folder.Path("out/A"), "old");
  What answer = What::kKeep;
  unpacker.SetOptions({.onExistingFile = [&](const auto&) {
    return morvunp::ExistingFileAnswer{answer, L"OTHER"};
  }});
  Listen();
  Unpack();
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"))) << "nothing repeats what was there before";
  ASSERT_EQ(told.size(), 3U);
  for (const std::size_t i : {1U, 2U}) EXPECT_EQ(told[i].reason, ItemReason::kNoSource);
  answer = What::kOtherName;
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"), Pair("COPY", "data"), Pair("LINK", "data"),
                                 Pair("OTHER", "data")));
  EXPECT_EQ(StatusOf("LINK").st_ino, StatusOf("OTHER").st_ino);
}

TEST_F(RarOptions, FilesHaveTheirOwnersWhereTheProcessIsRoots) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  using namespace std::string_literals;
  testsupport::RarBuilder builder;
  // The user 1234 and the group 4321; names before numbers; numbers behind names
  // that nobody has.
  builder.Add({.path = "A", .data = "a", .mode = 0100640, .record = "\x06\x0C\xD2\x09\xE1\x21"});
  builder.Add({.path = "B", .record = "\x06\x0D\x04root\x07\x08"s});
  builder.Add({.path = "C", .data = "c", .record = "\x06\x0F\x06~~none\x06~~none\x07\x08"s});
  builder.Add({.path = "D", .data = "d"});
  // Records that end too early, or say what is nobody's number.
  builder.Add({.path = "E", .data = "e", .record = "\x06\x0C\xD2\x09"s});
  builder.Add(
      {.path = "F", .data = "f", .record = "\x06\x0C\xFF\xFF\xFF\xFF\x0F\xCD\x80\x80\x80\x10"s});
  builder.Add({.path = "COPY", .redirection = 5, .redirectsTo = "A", .record = "\x06\x04\x05"s});
  ASSERT_TRUE(OpenBytes(builder.Build()));
  Set({});
  const auto ownersOf = [&](const char* name) {
    return std::pair(StatusOf(name).st_uid, StatusOf(name).st_gid);
  };
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(ownersOf("A"), std::pair(0U, getegid()));
  unpacker.SetOptions({.owners = true});
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(ownersOf("A"), std::pair(1234U, 4321U));
  EXPECT_EQ(StatusOf("A").st_mode & 07777, 0640U);
  EXPECT_EQ(ownersOf("B"), std::pair(0U, 8U));
  EXPECT_EQ(ownersOf("C"), std::pair(7U, 8U));
  for (const char* name : {"D", "E", "F"})
    EXPECT_EQ(ownersOf(name), std::pair(0U, getegid())) << name;
  EXPECT_EQ(ownersOf("COPY"), std::pair(5U, getegid()));
  std::filesystem::remove(folder.Path("out/A"));
  EXPECT_TRUE(Unpack(L"A"));
  EXPECT_EQ(ownersOf("A"), std::pair(1234U, 4321U));
  {
    chmod(folder.Path().c_str(), 0755);
    std::filesystem::remove_all(folder.Path("out"));
    mkdir(folder.Path("out").c_str(), 0777);
    Unprivileged::Give(folder.Path("out"));
    const Unprivileged user;
    EXPECT_TRUE(Unpack());
  }
  EXPECT_NE(ownersOf("A").first, 1234U);
}

TEST_F(RarOptions, FoldersHaveTheirModesWhenAllIsWritten) {
  testsupport::RarBuilder builder;
  const auto add = [&](const char* path, std::uint32_t mode) {
    builder.Add({.path = path, .mode = 040000U | mode, .isFolder = true});
  };
  add("CLOSED", 0);
  add("CLOSED/E", 0500);
  builder.Add({.path = "CLOSED/E/FILE", .data = "data"});
  add("IDS", 07711);
  add("SHARED", 0750);
  builder.Add({.path = "WINDOWS", .mode = 0x11, .isFolder = true, .fromWindows = true});
  ASSERT_TRUE(OpenBytes(builder.Build()));
  Set({});
  unpacker.SetOptions({.folderFacts = true});
  mkdir(folder.Path("out/SHARED").c_str(), 0700);
  Unprivileged::Give(folder.Path("out/SHARED"));
  chmod(folder.Path("out/SHARED").c_str(), 02700);
  Unprivileged::Give(folder.Path("out"));
  chmod(folder.Path().c_str(), 0755);
  {
    const Unprivileged user;
    EXPECT_TRUE(Unpack());
  }
  EXPECT_EQ(StatusOf("CLOSED").st_mode & 07777, 0U);
  EXPECT_EQ(StatusOf("IDS").st_mode & 07777, 0711U);
  EXPECT_EQ(StatusOf("SHARED").st_mode & 07777, 02750U) << "as the folder above shares it";
  EXPECT_EQ(StatusOf("WINDOWS").st_mode & 07777, 0755U);
  chmod(folder.Path("out/CLOSED").c_str(), 0700);
  EXPECT_EQ(StatusOf("CLOSED/E").st_mode & 07777, 0500U);
  EXPECT_EQ(Out("CLOSED/E/FILE"), "data");
}
#endif

class SevenZipOptions : public testsupport::UnpackTest<C7zUnpacker> {};

TEST_F(SevenZipOptions, FoldersHaveTheirModesWhenAllIsWritten) {
  std::filesystem::create_directories(folder.Path("in/D/E"));
  WriteFile(folder.Path("in/D/E/FILE"), "data");
  chmod(folder.Path("in/D/E").c_str(), 0500);
  chmod(folder.Path("in/D").c_str(), 02710);
  ASSERT_EQ(std::system(
                ("cd '" + folder.Path("in") + "' && 7z a -bso0 ../x D && mv ../x.7z ../x").c_str()),
            0);
  ASSERT_TRUE(Open());
  Set({});
  unpacker.SetOptions({.folderFacts = true});
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(StatusOf("D").st_mode & 07777, 0710U);
  EXPECT_EQ(StatusOf("D/E").st_mode & 07777, 0500U);
  EXPECT_EQ(Out("D/E/FILE"), "data");
}

TEST_F(SevenZipOptions, AWrongPasswordCostsNoExistingFile) {
  testsupport::Write7z(folder.Path("x"), {{"A", "secret"}, {"B", "secret"}}, "-mx1 -pright");
  WriteFile(folder.Path("out/A"), "old");
  ASSERT_TRUE(Open());
  Set({});
  unpacker.SetOptions({.brokenFiles = BrokenFiles::kRemove, .safeReplace = true});
  host.dialogAnswers = {testsupport::TypePassword(L"wrong")};
  Listen();
  Unpack();
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old")));
  ASSERT_EQ(told.size(), 2U);
  for (const auto& report : told) EXPECT_EQ(report.result, ItemResult::kFailed);
}

TYPED_TEST(Options, AFolderThatTakesNoNewFileHasTheExistingOneWritten) {
  this->Make({{"D/A", "new a"}, {"D/B", "new b"}});
  const std::string d = this->folder.Path("out/D");
  for (const char* name : {"/A", "/B"}) {
    WriteFile(d + name, "old");
    Unprivileged::Give(d + name);
  }
  // What has another name elsewhere must not change there.
  ASSERT_EQ(link((d + "/B").c_str(), this->folder.Path("other").c_str()), 0);
  chmod(this->folder.Path().c_str(), 0755);
  Unprivileged::Give(d);
  chmod(d.c_str(), 0555);
  this->Choose({.brokenFiles = BrokenFiles::kRemove, .safeReplace = true});
  {
    const Unprivileged user;
    this->unpacker.UnpackArchive(this->Target());
  }
  chmod(d.c_str(), 0755);
  EXPECT_EQ(this->Out("D/A"), "new a");
  EXPECT_TRUE(this->ToldOf(L"D\\A").wasInPlace);
  EXPECT_EQ(this->ToldOf(L"D\\A").result, ItemResult::kWritten);
  EXPECT_EQ(testsupport::ReadFile(this->folder.Path("other")), "old");
  EXPECT_EQ(this->ToldOf(L"D\\B").systemError, EACCES);
  EXPECT_FALSE(this->ToldOf(L"D\\B").wasInPlace);
}

}  // namespace
