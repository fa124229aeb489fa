// RAR archives: records, places, questions, passwords, volumes, damage, what a
// hostile archive cannot reach, and what the command says of them.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <new>
#include <nlohmann/json.hpp>

#include "morvunp/platform/text.h"
#include "output/linktarget.h"
#include "support/command.h"
#include "support/rarbuilder.h"
#include "support/rooms.h"
#include "support/unpacktest.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testsupport::DialogAnswer;
using testsupport::Exists;
using testsupport::kNo;
using testsupport::kYes;
using testsupport::OnTerminal;
using testsupport::RarItem;
using testsupport::ReadFile;
using testsupport::RunCommand;
using testsupport::TreeOf;
using testsupport::TypePassword;
using testsupport::WriteFile;

std::string RarFixture(const std::string& name) { return MORVUNP_FIXTURES "/rar/" + name; }

/// Lets a test set and see what only the class itself can.
using morvunp::ItemReason;
using morvunp::ItemResult;

class TestedUnpacker : public CRarUnpacker {
 public:
  using CRarUnpacker::CallbackProc;
  using CRarUnpacker::LocateFile;
  using CRarUnpacker::m_bReusePassword;
};

class RarTest : public testsupport::UnpackTest<TestedUnpacker> {
 protected:
  RarTest() {
    unpacker.SetItemReport([this](const morvunp::ItemReport& report) {
      if (report.reason == ItemReason::kNone || report.result == ItemResult::kNotReached) return;
      problems.emplace_back(report.path, report.reason);
      missing = report.detail;
    });
  }

  bool OpenFixture(const std::string& name) {
    return unpacker.OpenArchive(platform::ToLibraryPath(RarFixture(name)));
  }
  /// Of a set of four volumes.
  bool OpenFirstTwoVolumes() {
    for (const char* part : {"set.part1.rar", "set.part2.rar"}) {
      WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
    }
    return Open("set.part1.rar");
  }
  static std::string Built(const std::vector<RarItem>& items) {
    testsupport::RarBuilder builder;
    for (const RarItem& item : items) builder.Add(item);
    return builder.Build();
  }
  bool OpenBuilt(const std::vector<RarItem>& items) { return OpenBytes(Built(items)); }

  std::vector<std::pair<std::wstring, ItemReason>> problems;
  std::wstring missing;
};

// Opening, walking and telling.

TEST_F(RarTest, FillsBothRecords) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  RARFILEFULLINFO file;
  EXPECT_FALSE(unpacker.LocateFile(L"DOCS\\A", file));
  ASSERT_TRUE(unpacker.LocateFile(L"docs\\a.txt", file));
  EXPECT_EQ(file.strPath + L"|" + file.strName + L"|" + file.strTitle + L"|" + file.strExt,
            L"DOCS\\A.TXT|A.TXT|A|TXT");
  EXPECT_EQ(file.nUnpSize * 10 + file.nPackSize, 66U);
  EXPECT_EQ(file.nFileAttr, 0100644U);
  EXPECT_EQ(file.bInFolder + file.bFolder + file.bSplitAfter, 0);
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS\\SUB", file));
  EXPECT_TRUE(file.bInFolder && !file.bFolder);
  EXPECT_EQ(file.strName + file.strTitle + file.strExt, L"");
  EXPECT_EQ(file.nFileAttr, 0U) << "of folders only the path is told";
  RARFILESHORTINFO next;
  ASSERT_TRUE(unpacker.GetFileShortInfo(next)) << "a second record is of the following header";
  EXPECT_EQ(next.strPath, L"DOCS");
  EXPECT_TRUE(next.bFolder && !next.bInFolder);
}

TEST_F(RarTest, AnswersSummaries) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  EXPECT_TRUE(unpacker.IsFolder(L"OCS\\S")) << "anywhere in the path of a folder";
  EXPECT_FALSE(unpacker.IsFolder(L"TOP"));
  EXPECT_THAT(
      unpacker.GetFileOutputInfo(L"top.txt"),
      testing::HasSubstr(L"Size - 3 bytes, Packed - 3 bytes, Ratio - 100%, CRC - 1ed91fca"));
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"DOCS"),
            L"Files - 2, Folders - 1, Size - 1 498 bytes, Packed - 325 bytes, Ratio - 21%");
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 3, Folders - 3, Size - 1 501 bytes, Packed - 328 bytes, Ratio - 21%");
  EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kNone);
}

TEST_F(RarTest, TurnsNamesIntoPathsThatCannotGrowFolders) {
  // A byte that is no UTF-8, written as packers do (U+FFFE, U+E0FF), a
  // backslash in a name, a character beyond the basic plane.
  WriteFile(folder.Path("odd \xff\xc3\xa9.rar"),
            Built({{.path = "d/x\xef\xbf\xbe\xee\x83\xbf\\y\xf0\x90\x80\x80", .data = "odd"}}));
  ASSERT_TRUE(Open("odd \xff\xc3\xa9.rar"));
  const std::wstring path = std::wstring(L"d\\x\xdcff\xdc5cy") + wchar_t{0x10000};
  EXPECT_THAT(Paths(), ElementsAre(path));
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out("d/x\xff\\y\xf0\x90\x80\x80"), "odd");
}

TEST_F(RarTest, AsksOnceForThePasswordOfHeaders) {
  host.dialogAnswers = {TypePassword(L"secret")};
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_EQ(Paths().size(), 6U);
  EXPECT_TRUE(Unpack()) << "the files have the same password";
  unpacker.m_bReusePassword = 1;
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_EQ(Paths().size(), 6U);
  EXPECT_EQ(host.dialogs.size(), 1U);
  unpacker.m_bReusePassword = 0;
  host.dialogAnswers = {DialogAnswer::Press(IDCANCEL)};
  EXPECT_FALSE(OpenFixture("encrypted-headers.rar")) << "asks again, and is cancelled";
  EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kNoPassword);
  ASSERT_TRUE(OpenFixture("solid-encrypted-files.rar"));
  EXPECT_EQ(Paths().size(), 6U) << "a list needs no password of files";
}

TEST_F(RarTest, TellsOfAWrongPasswordWithTheFirstShortRecord) {
  host.dialogAnswers = {TypePassword(L"wrong")};
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_THAT(Paths(), IsEmpty()) << "full records tell nothing";
  host.messageBoxAnswers = {IDOK};
  EXPECT_FALSE(unpacker.IsFolder(L"DOCS"));
  EXPECT_EQ(host.messageBoxes.at(0).text, L"The specified password is incorrect.");
  EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kWrongPassword);
}

TEST_F(RarTest, TellsWhyAListIsCutShort) {
  ASSERT_TRUE(OpenFirstTwoVolumes());
  EXPECT_EQ(Paths().size(), 2U);
  EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kMissingVolume);

  std::string damaged = Built({{.path = "NAME", .data = "a"}});
  damaged[damaged.find("NAME")] ^= 1;
  host.messageBoxAnswers = {IDOK};
  ASSERT_TRUE(OpenBytes(damaged));
  EXPECT_FALSE(unpacker.IsFolder(L"NAME"));
  EXPECT_EQ(host.messageBoxes.at(0).text, L"Corrupt file or wrong password.");
  EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kDamaged);
}

// Cut archives.

TEST_F(RarTest, TellsACutArchiveFromOneThatEndsOtherwise) {
  using std::string_literals::operator""s;
  const std::string archive = Built({{.path = "A", .data = "aaaa"}, {.path = "B", .data = "b"}});
  const std::string old = testsupport::BuildRar4({.path = "A", .data = "aaaa"});
  const std::string bare = old.substr(0, old.size() - 7);
  const std::string program = "MZ" + std::string(5000, 'x') + "Rar!\x1a\x07\x01\0x"s;
  std::string damaged = archive;
  std::string damagedOld = old;
  damaged[10] ^= 1;
  damagedOld[10] ^= 1;
  const struct {
    const char* what;
    std::string bytes;
    ItemReason problem = ItemReason::kNone;
  } cases[] = {
      {"bytes behind the end", archive + std::string(300, 's')},
      {"a program in front", program + archive + "signature"},
      {"the same, cut", program + archive.substr(0, archive.size() - 1), ItemReason::kCutShort},
      {"no end block", archive.substr(0, archive.size() - 8), ItemReason::kCutShort},
      {"zeros for an end", archive.substr(0, archive.size() - 8) + std::string(8, '\0'),
       ItemReason::kDamaged},
      {"a damaged beginning", damaged, ItemReason::kDamaged},
      {"the older format", old},
      {"its end block left out", bare},
      {"the same and other bytes", bare + std::string(300, 's')},
      {"the same and padding", bare + "\r\n\x1a"},
      {"its data cut", bare.substr(0, bare.size() - 1), ItemReason::kCutShort},
      {"its header cut", bare.substr(0, bare.size() - 5), ItemReason::kCutShort},
      {"its end block cut", old.substr(0, old.size() - 2), ItemReason::kCutShort},
      {"nothing behind its beginning", old.substr(0, 20), ItemReason::kCutShort},
      {"its beginning damaged", damagedOld, ItemReason::kDamaged},
  };
  for (const auto& [what, bytes, problem] : cases) {
    SCOPED_TRACE(what);
    ASSERT_TRUE(OpenBytes(bytes));
    EXPECT_EQ(unpacker.GetWalkProblem(), problem);
    EXPECT_EQ(unpacker.IsListComplete(), problem == ItemReason::kNone);
  }
}

TEST_F(RarTest, ListsNoItemWhoseHeaderIsCut) {
  const std::string archive = testsupport::BuildRar4({.path = "NAME", .data = "data"});
  ASSERT_TRUE(OpenBytes(archive.substr(0, archive.find("NAME") + 2)));
  EXPECT_THAT(Paths(), IsEmpty());
  Listen();
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(told, IsEmpty());
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(RarTest, TellsDamageInFrontOfACutForWhatItIs) {
  std::string archive = Built({{.path = "A", .data = "bad"}, {.path = "B", .data = "cut"}});
  archive[archive.find("bad")] ^= 1;
  archive.resize(archive.find("cut") + 1);
  ASSERT_TRUE(OpenBytes(archive));
  host.messageBoxAnswers = {IDOK, IDOK};
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems,
              ElementsAre(Pair(L"A", ItemReason::kDamaged), Pair(L"B", ItemReason::kCutShort)));
}

TEST_F(RarTest, TellsAVolumeThatIsCut) {
  OpenFirstTwoVolumes();
  for (const char* part : {"set.part3.rar", "set.part4.rar"}) {
    WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
  }
  for (const std::uintmax_t length : {700U, 30U, 3U}) {
    std::filesystem::resize_file(folder.Path("set.part2.rar"), length);
    ASSERT_TRUE(Open("set.part1.rar"));
    EXPECT_FALSE(unpacker.IsListComplete());
    Listen();
    host.messageBoxAnswers = {IDOK};
    EXPECT_FALSE(Unpack());
    ASSERT_EQ(told.size(), 1U) << length;
    EXPECT_EQ(told[0].reason, ItemReason::kCutShort) << length;
    EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kCutShort, L"")));
  }
}

TEST_F(RarTest, TellsMostCutsBehindEncryptedHeaders) {
  const std::string archive = ReadFile(RarFixture("encrypted-headers.rar"));
  host.dialogAnswers = {TypePassword(L"secret")};
  ASSERT_TRUE(OpenBytes(archive));
  EXPECT_EQ(Paths().size(), 6U);
  EXPECT_TRUE(unpacker.IsListComplete());
  for (const std::size_t length : {60U, 360U}) {
    host.dialogAnswers = {TypePassword(L"secret")};
    ASSERT_TRUE(OpenBytes(archive.substr(0, length)));
    Paths();
    EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kCutShort) << length;
  }
}

TEST_F(RarTest, ForgetsAnswersWhateverTheOpenGives) {
  INIYESTOALL answers{1, 1, 1, 1};
  unpacker.SetIniYesToAll(answers);
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath("none.rar")));
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal + answers.bYesToAllHidden, 0);
}

// Unpacking.

TEST_F(RarTest, BringsThePlainItemsOutWithoutAPassword) {
  // The encrypted ones of the fixture between two of ours.
  ASSERT_TRUE(OpenFixture("encrypted-files.rar"));
  const std::string encrypted = ReadFile(RarFixture("encrypted-files.rar"));
  const std::string plain = Built({{.path = "LAST", .data = "last"}});
  constexpr std::size_t kSignatureAndMain = 8 + 8;
  constexpr std::size_t kEnd = 8;
  const std::string archive =
      encrypted.substr(0, encrypted.size() - kEnd) + plain.substr(kSignatureAndMain);
  ASSERT_TRUE(OpenBytes(archive));
  Set({});
  const std::size_t count = Records().size();
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true}));
  Listen();
  host.dialogAnswers = {DialogAnswer::Press(IDCANCEL)};
  Unpack();
  EXPECT_EQ(Out("LAST"), "last");
  EXPECT_EQ(told.size(), count);
  for (const Told& report : told) {
    EXPECT_NE(report.result, ItemResult::kNotReached) << report.path.c_str();
  }
  EXPECT_TRUE(host.dialogAnswers.empty()) << "asked once";
  EXPECT_THAT(ends.back(), Pair(ItemReason::kNone, L""));
}

TEST_F(RarTest, AsksOnceWhereAVolumeIs) {
  for (const char* part : {"set.part1.rar", "set.part2.rar", "set.part4.rar"}) {
    WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
  }
  WriteFile(folder.Path("elsewhere/third"), ReadFile(RarFixture("set.part3.rar")));
  WriteFile(folder.Path("elsewhere/set.part4.rar"), ReadFile(RarFixture("set.part4.rar")));
  std::vector<std::wstring> asked;
  std::optional<std::wstring> answer;
  ASSERT_TRUE(unpacker.SetOptions({.onMissingVolume = [&](const std::wstring& name) {
    asked.push_back(name);
    return answer;
  }}));
  Set({});
  ASSERT_TRUE(Open("set.part1.rar"));
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(asked, ElementsAre(L"set.part3.rar"));
  asked.clear();
  std::filesystem::rename(folder.Path("elsewhere/third"), folder.Path("elsewhere/set.part3.rar"));
  answer = folder.LibraryPath("elsewhere/set.part3.rar");
  ASSERT_TRUE(Open("set.part1.rar"));
  const std::size_t count = Records().size();
  EXPECT_EQ(Records().size(), count) << "where a volume is holds for the next walk";
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(asked, testing::Contains(L"set.part3.rar").Times(1));
}

TEST_F(RarTest, HandsNoItemToTheSinkOfAnother) {
  class Drop : public morvunp::ItemSink {
   public:
    void Begin(const morvunp::RoutedItem&) override {}
    bool Write(const void*, std::size_t) override { return true; }
    bool End(const morvunp::ItemReport&) override { return true; }
  } drop;
  // Its first item began in an earlier volume and comes to nothing.
  ASSERT_TRUE(OpenFixture("set.part4.rar"));
  Set({});
  Listen();
  const auto route = [&](const morvunp::RoutedItem& item) {
    if (item.position == 0) return morvunp::Route::Into(drop);
    return morvunp::Route::To({Target(), L"f" + std::to_wstring(item.position)});
  };
  unpacker.UnpackItems(Target(), route);
  ASSERT_GE(told.size(), 2U);
  EXPECT_EQ(told[0].reason, ItemReason::kBeginsEarlier);
  EXPECT_EQ(told[1].result, ItemResult::kWritten);
  EXPECT_FALSE(Out().empty());
}

TEST_F(RarTest, StopsWhileItPassesOverASolidArchive) {
  testsupport::RarBuilder builder;
  for (const char* name : {"A", "B", "C"}) {
    builder.Add({.path = name, .data = std::string(3'000'000, *name)});
  }
  ASSERT_TRUE(OpenBytes(builder.Build(testsupport::RarBuilder::kSolid)));
  Set({});
  ASSERT_TRUE(unpacker.SetOptions({.pumpAlways = true}));
  Listen();
  host.messageBoxAnswers = {IDYES};
  bool isPosted = false;
  EXPECT_FALSE(unpacker.UnpackItems(Target(), [&](const morvunp::RoutedItem& item) {
    if (item.position < 2) return morvunp::Route::PassOver();
    if (!std::exchange(isPosted, true)) host.PostStop();
    return morvunp::Route::To({Target(), L"last"});
  }));
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kInterrupted, L"")));
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(RarTest, TellsTheComment) {
  ASSERT_TRUE(OpenBuilt({{.path = "CMT", .data = "two\nlines \xE2\x82\xAC", .isService = true},
                         {.path = "A", .data = "a"}}));
  EXPECT_EQ(unpacker.GetComment(), L"two\nlines \u20AC");
  ASSERT_TRUE(OpenFixture("tree.rar"));
  EXPECT_EQ(unpacker.GetComment(), L"");
}

TEST_F(RarTest, OpensForItselfAsACopy) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  ASSERT_TRUE(unpacker.FindFile());
  const std::size_t count = Records().size();
  TestedUnpacker copy(unpacker);
  EXPECT_FALSE(copy.CloseArchive()) << "nothing is open in it";
  EXPECT_EQ(Records().size(), count) << "nor closed in the other";
  ASSERT_TRUE(copy.FindFile());
  copy = unpacker;
  EXPECT_FALSE(copy.CloseArchive());
}

TEST_F(RarTest, TakesSetUidOffAndHeedsTheUmask) {
  const mode_t before = umask(027);
  EXPECT_TRUE(OpenBuilt({{.path = "U", .data = "u", .mode = 0106777},
                         {.path = "R", .data = "r", .mode = 0100444},
                         {.path = "W", .data = "w", .mode = 0x20, .fromWindows = true}}));
  EXPECT_TRUE(Unpack());
  umask(before);
  for (const auto& [name, mode] : {std::pair("U", 0750U), {"R", 0440U}, {"W", 0640U}}) {
    EXPECT_EQ(StatusOf(name).st_mode & 07777, mode) << name;
  }
}

TEST_F(RarTest, KeepsTheExistingFileWhenExtractionFails) {
  Set({});
  WriteFile(folder.Path("out/A"), "old");
  std::string archive = Built({{.path = "A", .data = "bad"}, {.path = "B", .data = "b"}});
  archive[archive.find("bad")] ^= 1;
  ASSERT_TRUE(OpenBytes(archive));
  host.messageBoxAnswers = {IDOK};
  EXPECT_TRUE(Unpack()) << "the last file is good";
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"), Pair("B", "b")));
  EXPECT_THAT(problems, ElementsAre(Pair(L"A", ItemReason::kDamaged)));
}

TEST_F(RarTest, AsksForThePasswordOfFiles) {
  ASSERT_TRUE(OpenFixture("solid-encrypted-files.rar"));
  host.dialogAnswers = {TypePassword(L"secret")};
  EXPECT_TRUE(Unpack(L"TOP.TXT")) << "others come before it";
  EXPECT_EQ(Out("TOP.TXT"), "top");
  WriteFile(folder.Path("out/DOCS/SUB/NUMBERS"), "old");
  WriteFile(folder.Path("out/DOCS/A.TXT"), "old");
  host.dialogAnswers = {DialogAnswer::Press(kNo), DialogAnswer::Press(kYes),
                        TypePassword(L"secret"), DialogAnswer::Press(kYes)};
  EXPECT_TRUE(Unpack()) << "it builds on a file that was kept";
  EXPECT_EQ(Out("DOCS/SUB/NUMBERS") + Out("DOCS/A.TXT"), "oldalpha\n");
}

TEST_F(RarTest, TellsWrongEmptyAndCancelledPasswordsApart) {
  ASSERT_TRUE(OpenFixture("encrypted-files.rar"));
  WriteFile(folder.Path("out/DOCS/A.TXT"), "old");
  Set({});
  host.dialogAnswers = std::deque<DialogAnswer>(3, TypePassword(L"wrong"));
  host.messageBoxAnswers = std::deque<int>(3, IDOK);
  Unpack();
  EXPECT_THAT(problems, testing::Each(Pair(testing::_, ItemReason::kWrongPassword)));
  EXPECT_EQ(host.messageBoxes.size(), 3U);
  EXPECT_TRUE(Exists(folder.Path("out/EMPTY"))) << "the run goes on";
  for (const DialogAnswer& answer :
       {TypePassword(L""), DialogAnswer::Press(IDCANCEL), DialogAnswer::CannotRun()}) {
    problems.clear();
    host.dialogAnswers = {answer};
    EXPECT_FALSE(Unpack());
    EXPECT_THAT(problems, ElementsAre(Pair(testing::_, ItemReason::kNoPassword)));
    EXPECT_EQ(unpacker.GetWalkProblem(), ItemReason::kNoPassword) << "the run ended there";
  }
  EXPECT_EQ(Out("DOCS/A.TXT"), "old");
}

TEST_F(RarTest, WritesNoPasswordBeyondTheEnginesBuffer) {
  for (const auto& [password, expected, answer] :
       {std::tuple(L"1234567", std::string("1234567\0#", 9), 0), {L"12345678", "#########", -1}}) {
    std::string buffer(9, '#');
    host.dialogAnswers = {TypePassword(password)};
    CRarUnpacker& asked = unpacker;
    EXPECT_EQ(unpacker.CallbackProc(2, reinterpret_cast<LPARAM>(&asked),
                                    reinterpret_cast<LPARAM>(buffer.data()), 8),
              answer);
    EXPECT_EQ(buffer, expected);
  }
}

TEST_F(RarTest, JoinsVolumesAndNamesTheMissingOne) {
  ASSERT_TRUE(OpenFixture("set.part1.rar"));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("BIG.TXT", "TOP.TXT"));
  const std::string big = Out("BIG.TXT");
  EXPECT_EQ(big.size(), 2692U);

  Set({});
  ASSERT_TRUE(OpenFixture("set.part3.rar"));
  EXPECT_TRUE(Unpack()) << "what begins there comes out";
  ASSERT_TRUE(OpenFirstTwoVolumes());
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"BIG.TXT", ItemReason::kBeginsEarlier),
                                    Pair(L"BIG.TXT", ItemReason::kMissingVolume)));
  EXPECT_EQ(missing, folder.LibraryPath("set.part3.rar"));
  EXPECT_EQ(Out("BIG.TXT"), big) << "what was there is back";
}

TEST_F(RarTest, TellsASplitFileOnceAndTheVolumeThatEndsTheRun) {
  ASSERT_TRUE(OpenFixture("set.part1.rar"));
  const std::map<ULONGLONG, std::wstring> walk = Positions();
  EXPECT_THAT(walk, ElementsAre(Pair(0U, L"BIG.TXT"), Pair(1U, L"TOP.TXT")));
  Listen();
  EXPECT_TRUE(Unpack());
  std::map<ULONGLONG, std::wstring> reported;
  for (const Told& report : told) {
    EXPECT_EQ(report.result, ItemResult::kWritten);
    reported.insert({report.position, report.path});
  }
  EXPECT_EQ(reported, walk);
  EXPECT_EQ(told.size(), walk.size());
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kNone, L"")));

  Set({});
  ASSERT_TRUE(OpenFirstTwoVolumes());
  Listen();
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(ends,
              ElementsAre(Pair(ItemReason::kMissingVolume, folder.LibraryPath("set.part3.rar"))));
}

TEST_F(RarTest, NeverOverwritesAVolumeOfItsSet) {
  for (const char* part : {"set.part1.rar", "set.part2.rar", "set.part3.rar", "set.part4.rar"}) {
    WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
  }
  // No volume has the name of an item, but one may be there under that name.
  std::filesystem::create_hard_link(folder.Path("set.part2.rar"), folder.Path("BIG.TXT"));
  std::filesystem::create_hard_link(folder.Path("set.part4.rar"), folder.Path("TOP.TXT"));
  Set({});
  ASSERT_TRUE(Open("set.part1.rar"));
  Listen();
  EXPECT_FALSE(unpacker.UnpackArchive(folder.LibraryPath()));
  EXPECT_EQ(told.size(), 2U);
  for (const Told& report : told) EXPECT_TRUE(IsOfArchive(report));
  EXPECT_EQ(ReadFile(folder.Path("BIG.TXT")), ReadFile(RarFixture("set.part2.rar")));
}

TEST_F(RarTest, SaysThatAnArchiveIsGone) {
  ASSERT_TRUE(OpenBuilt({{.path = "A", .data = "a"}}));
  std::filesystem::remove(folder.Path("x"));
  Listen();
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kMissingVolume, folder.LibraryPath("x"))));
}

TEST_F(RarTest, MakesSafeLinksAndCopies) {
  ASSERT_TRUE(OpenFixture("links.rar"));
  EXPECT_TRUE(Unpack());
  const std::string numbers = Out("D/SAME2");
  EXPECT_THAT(Out(), ElementsAre(Pair("D/", ""), Pair("D/HARD", "one"), Pair("D/ONE", "one"),
                                 Pair("D/SAME1", numbers), Pair("D/SAME2", numbers),
                                 Pair("D/SOFT@", "ONE"), Pair("D/UP@", "..")));
  EXPECT_EQ(StatusOf("D/HARD").st_ino, StatusOf("D/ONE").st_ino);
  EXPECT_TRUE(unpacker.UnpackFile(L"D\\HARD", folder.LibraryPath()));
  EXPECT_EQ(ReadFile(folder.Path("D/HARD")), "one") << "alone it has the data that it names";
}

TEST_F(RarTest, RefusesLinksThatLeadOut) {
  WriteFile(folder.Path("planted"), "untouched");
  const std::vector<RarItem> items{
      {.path = "L", .redirection = 1, .redirectsTo = "../planted"},
      {.path = "deep/out", .redirection = 1, .redirectsTo = "../../planted"},
      {.path = "H", .redirection = 4, .redirectsTo = "../planted"},
      {.path = "F", .redirection = 5, .redirectsTo = "planted"},
      {.path = "SELF", .redirection = 4, .redirectsTo = "SELF"}};
  ASSERT_TRUE(OpenBuilt(items));
  // Where the engine would look for the sources of links and copies.
  const std::string before = std::filesystem::current_path();
  ASSERT_EQ(chdir(folder.Path().c_str()), 0);
  EXPECT_FALSE(Unpack() || Unpack(L"H") || Unpack(L"SELF"));
  ASSERT_EQ(chdir(before.c_str()), 0);
  EXPECT_EQ(problems.size(), items.size() + 2);

  // In the older format the data of a link is its target.
  for (const char* target : {"x/../../planted", "x/y"}) {
    ASSERT_TRUE(OpenBytes(testsupport::BuildRar4({.path = "S", .data = target, .mode = 0120777})));
    Unpack();
  }
  EXPECT_THAT(Out(), ElementsAre(Pair("S@", "x/y"), Pair("deep/", "")));
}

// The engine refuses such links too, which would hide a fault here.
TEST(RarLinks, ClimbFirstAndNoHigherThanTheTarget) {
  using Links = std::vector<std::pair<std::wstring, std::size_t>>;
  for (const auto& [target, depth] : Links{{L"a\\b", 0}, {L".\\a", 0}, {L"..\\..\\a", 2}}) {
    EXPECT_TRUE(output::StaysInside(target, depth)) << target;
  }
  for (const auto& [target, depth] : Links{
           {L"", 0}, {L"\\etc", 3}, {L"..", 0}, {L"..\\..", 1}, {L"a\\..", 3}, {L"..\\a\\..", 3}}) {
    EXPECT_FALSE(output::StaysInside(target, depth)) << target;
  }
}

TEST_F(RarTest, CopiesNothingThatTheRunDidNotWrite) {
  WriteFile(folder.Path("out/MINE"), "private");
  ASSERT_TRUE(OpenBuilt({{.path = "COPY", .redirection = 5, .redirectsTo = "MINE"}}));
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"COPY", ItemReason::kNoSource)));
  EXPECT_THAT(Names(), ElementsAre("MINE"));
}

TEST_F(RarTest, NeverWritesThroughLinksOfItsOwn) {
  WriteFile(folder.Path("outside/planted"), "untouched");
  ASSERT_EQ(link(folder.Path("outside/planted").c_str(), folder.Path("out/HARD").c_str()), 0);
  Set({});
  ASSERT_TRUE(OpenBuilt({{.path = "OWN", .redirection = 1, .redirectsTo = "HERE"},
                         {.path = "OWN", .data = "evil"},
                         {.path = "OWN/X", .data = "evil"},
                         {.path = "HARD", .data = "mine"}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(TreeOf(folder.Path("outside")), ElementsAre(Pair("planted", "untouched")));
  EXPECT_THAT(Out(), ElementsAre(Pair("HARD", "mine"), Pair("OWN@", "HERE")));
}

TEST_F(RarTest, WritesNothingForNamesThatAreTooLongOrClimb) {
  ASSERT_TRUE(OpenBuilt({{.path = std::string(1024, 'x'), .data = "evil"},
                         {.path = "../up", .mode = 0x10, .isFolder = true},
                         {.path = "GOOD", .data = "good"}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(TreeOf(folder.Path()),
              ElementsAre(Pair("out/", ""), Pair("out/GOOD", "good"), Pair("x", testing::_)));
}

TEST_F(RarTest, UnpacksTheItemInHandByItsOwnWalk) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  RARFILEFULLINFO info;
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS\\A.TXT", info));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"in\\NEW", Target()));
  EXPECT_EQ(Out("in/NEW"), "alpha\n");
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"AGAIN", Target())) << "it is done with";
  EXPECT_TRUE(unpacker.FindNextFile() && unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strPath, L"DOCS\\SUB\\NUMBERS") << "the walk is in step";
  for (const std::wstring& name : {std::wstring(L"..\\X"), std::wstring(3000, L'x')}) {
    EXPECT_FALSE(unpacker.UnpackCurrentFile(name, Target()));
  }
}

// The command.

TEST_F(RarTest, CommandListsASplitFileOnceAndUnpacksIt) {
  const auto listed = RunCommand({"list", RarFixture("set.part1.rar"), "--json"});
  const auto items = nlohmann::json::parse(listed.output).at("items");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0].at("path"), "BIG.TXT");
  EXPECT_EQ(items[0].at("packed"), 2692) << "of all parts together";
  EXPECT_EQ(items[0].at("modified"), "2024-02-03T04:05:06Z");
  const auto all = RunCommand({"info", RarFixture("set.part1.rar")});
  EXPECT_THAT(all.output, HasSubstr("Files - 2, Folders - 0, Size - 2 695 bytes, Packed - 2 695"));
  const auto one = RunCommand({"info", RarFixture("set.part1.rar"), "BIG.TXT"});
  EXPECT_THAT(one.output, HasSubstr("Packed - 2 692 bytes, Ratio - 100%, CRC - 5a4a18f8"));
  const auto unpacked =
      RunCommand({"extract", RarFixture("set.part1.rar"), "-C", folder.Path("out")});
  EXPECT_EQ(unpacked.output,
            "2 files, 0 folders, 2 695 bytes unpacked to " + folder.Path("out") + "\n");
}

TEST_F(RarTest, CommandTakesPasswordsFromAFile) {
  WriteFile(folder.Path("password"), "secret\r\nmore\n");
  for (const auto& [file, exitCode] : {std::pair("password", 0), {"nowhere", 2}}) {
    const auto listed = RunCommand(
        {"list", RarFixture("encrypted-headers.rar"), "--password-file", folder.Path(file)});
    EXPECT_EQ(listed.exitCode, exitCode) << listed.errors;
  }
}

TEST_F(RarTest, CommandSaysWhatWentWrong) {
  OpenFirstTwoVolumes();
  const std::string set = folder.Path("set.part1.rar");
  const std::string next = folder.Path("set.part3.rar");
  const std::string headers = RarFixture("encrypted-headers.rar");
  const std::string files = RarFixture("encrypted-files.rar");
  const std::string link = folder.Path("link");
  WriteFile(link, Built({{.path = "L", .redirection = 1, .redirectsTo = "../up"}}));
  const std::string damaged = folder.Path("damaged");
  std::string bytes = testsupport::BuildRar4({.path = "BAD", .data = "data"});
  bytes[bytes.find("data")] ^= 1;
  WriteFile(damaged, bytes);
  const struct {
    std::string archive;
    std::string password;
    int exitCode;
    std::string errors;
  } cases[] = {{headers, "wrong", 2, ".rar: wrong password\n"},
               {files, "wrong", 1, "TOP.TXT: wrong password\n"},
               {files, "", 1, "DOCS/A.TXT: it is encrypted and no password was given\n"},
               {files, "", 1, "TOP.TXT: it is encrypted and no password was given\n"},
               {damaged, "", 1, "BAD: failed: damaged in the archive\n"},
               {link, "", 1, "L: refused: a link that leads out of the folder\n"},
               {set, "", 1, "BIG.TXT: the volume " + next + " is missing\n"},
               {set, "", 1, "the list is cut short: a volume of the set is missing\n"}};
  for (const auto& [archive, password, exitCode, errors] : cases) {
    testsupport::Arguments arguments{"extract", archive, "-C", folder.Path("out")};
    if (!password.empty()) arguments.insert(arguments.end(), {"--password-file", "-"});
    const auto result = RunCommand(arguments, password);
    EXPECT_EQ(result.exitCode, exitCode) << archive;
    EXPECT_THAT(result.errors, HasSubstr(errors));
  }
}

TEST_F(RarTest, CommandAsksForThePasswordUnseenAndAgainWhenItIsWrong) {
  OnTerminal command({"extract", RarFixture("encrypted-headers.rar"), "-C", folder.Path("out")});
  ASSERT_TRUE(command.Await("Password: "));
  command.Type("wrong\n");
  ASSERT_TRUE(command.Await("wrong password")) << command.Shown();
  ASSERT_TRUE(command.Await("Password: ")) << command.Shown();
  command.Type("oops\x15sec\x1a\x1crex\x7ft\n");
  EXPECT_EQ(command.Finish(), 0) << command.Shown();
  EXPECT_THAT(command.Shown(), HasSubstr("*****"));
  EXPECT_THAT(command.Shown(), Not(HasSubstr("secre")));
  EXPECT_EQ(Out("DOCS/A.TXT"), "alpha\n");
}

TEST_F(RarTest, CommandEndsWhenThePromptIsCancelled) {
  for (const char* key : {"\x1b", "\x03", "\x04"}) {
    OnTerminal command({"extract", RarFixture("encrypted-files.rar"), "-C", folder.Path("out")});
    ASSERT_TRUE(command.Await("Password: "));
    command.Type(key);
    EXPECT_EQ(command.Finish(), 130) << command.Shown();
    EXPECT_THAT(command.Shown(), HasSubstr("no password was given"));
  }
  EXPECT_THAT(Names(), ElementsAre("DOCS/", "DOCS/SUB/", "EMPTY/")) << "what needs no password";
}

}  // namespace
