// What the options of a run change, in all formats: what is left of broken
// files and of those that they were to replace.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "support/bytes.h"
#include "support/formats.h"
#include "support/unpacktest.h"

namespace {

using morvunp::BrokenFiles;
using morvunp::ItemReason;
using morvunp::ItemResult;
using morvunp::UnpackOptions;
using testing::ElementsAre;
using testing::Pair;
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
    const auto found = std::find_if(this->told.begin(), this->told.end(),
                                    [&](const auto& report) { return report.path == path; });
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

class SevenZipOptions : public testsupport::UnpackTest<C7zUnpacker> {};

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

/// The rights of a user who is not root, who may do anything.
class Unprivileged {
 public:
  Unprivileged() {
    if (m_bRoot && seteuid(kNobody) != 0) throw std::runtime_error("seteuid");
  }
  ~Unprivileged() {
    if (m_bRoot && seteuid(0) != 0) std::abort();
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
};

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
