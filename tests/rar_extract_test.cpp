// Unpacking RAR archives: places, questions, passwords, volumes, damage, and
// what a hostile archive cannot reach.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <new>

#include "rar/linktarget.h"
#include "support/rartest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::DialogAnswer;
using testsupport::Exists;
using testsupport::kNo;
using testsupport::kYes;
using testsupport::RarFixture;
using testsupport::RarItem;
using testsupport::ReadFile;
using testsupport::TreeOf;
using testsupport::TypePassword;
using testsupport::WriteFile;

class RarExtract : public testsupport::RarTest {};

TEST_F(RarExtract, TakesSetUidOffAndHeedsTheUmask) {
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

TEST_F(RarExtract, KeepsTheExistingFileWhenExtractionFails) {
  Set({});
  WriteFile(folder.Path("out/A"), "old");
  ASSERT_TRUE(
      OpenBuilt({{.path = "A", .data = "bad", .hasWrongSum = true}, {.path = "B", .data = "b"}}));
  host.messageBoxAnswers = {IDOK};
  EXPECT_TRUE(Unpack()) << "the last file is good";
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"), Pair("B", "b")));
  EXPECT_THAT(problems, ElementsAre(Pair(L"A", RarProblem::kDamaged)));
}

TEST_F(RarExtract, AsksForThePasswordOfFiles) {
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

TEST_F(RarExtract, TellsWrongEmptyAndCancelledPasswordsApart) {
  ASSERT_TRUE(OpenFixture("encrypted-files.rar"));
  WriteFile(folder.Path("out/DOCS/A.TXT"), "old");
  Set({});
  host.dialogAnswers = std::deque<DialogAnswer>(3, TypePassword(L"wrong"));
  host.messageBoxAnswers = std::deque<int>(3, IDOK);
  Unpack();
  EXPECT_THAT(problems, testing::Each(Pair(testing::_, RarProblem::kWrongPassword)));
  EXPECT_EQ(host.messageBoxes.size(), 3U);
  EXPECT_TRUE(Exists(folder.Path("out/EMPTY"))) << "the run goes on";
  for (const DialogAnswer& answer :
       {TypePassword(L""), DialogAnswer::Press(IDCANCEL), DialogAnswer::CannotRun()}) {
    problems.clear();
    host.dialogAnswers = {answer};
    EXPECT_FALSE(Unpack());
    EXPECT_THAT(problems, ElementsAre(Pair(testing::_, RarProblem::kNoPassword)));
    EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kNoPassword) << "the run ended there";
  }
  EXPECT_EQ(Out("DOCS/A.TXT"), "old");
}

TEST_F(RarExtract, WritesNoPasswordBeyondTheEnginesBuffer) {
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

TEST_F(RarExtract, JoinsVolumesAndNamesTheMissingOne) {
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
  EXPECT_THAT(problems, ElementsAre(Pair(L"BIG.TXT", RarProblem::kBeginsEarlier),
                                    Pair(L"BIG.TXT", RarProblem::kMissingVolume)));
  EXPECT_EQ(missing, folder.LibraryPath("set.part3.rar"));
  EXPECT_EQ(Out("BIG.TXT"), big) << "what was there is back";
}

TEST_F(RarExtract, PassesOnWhatTheHostThrows) {
  ASSERT_TRUE(OpenBuilt({{.path = "A", .data = "a"}}));
  host.onPendingEvents = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Unpack(), std::bad_alloc);
  host.onPendingEvents = nullptr;
  EXPECT_TRUE(Unpack());
}

TEST_F(RarExtract, MakesSafeLinksAndCopies) {
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

TEST_F(RarExtract, RefusesLinksThatLeadOut) {
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
    EXPECT_TRUE(rar::StaysInside(target, depth)) << target;
  }
  for (const auto& [target, depth] : Links{
           {L"", 0}, {L"\\etc", 3}, {L"..", 0}, {L"..\\..", 1}, {L"a\\..", 3}, {L"..\\a\\..", 3}}) {
    EXPECT_FALSE(rar::StaysInside(target, depth)) << target;
  }
}

TEST_F(RarExtract, CopiesNothingThatTheRunDidNotWrite) {
  WriteFile(folder.Path("out/MINE"), "private");
  ASSERT_TRUE(OpenBuilt({{.path = "COPY", .redirection = 5, .redirectsTo = "MINE"}}));
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"COPY", RarProblem::kNoSource)));
  EXPECT_THAT(Names(), ElementsAre("MINE"));
}

TEST_F(RarExtract, NeverWritesThroughLinksOfItsOwn) {
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

TEST_F(RarExtract, WritesNothingForNamesThatAreTooLongOrClimb) {
  ASSERT_TRUE(OpenBuilt({{.path = std::string(1024, 'x'), .data = "evil"},
                         {.path = "../up", .mode = 0x10, .isFolder = true},
                         {.path = "GOOD", .data = "good"}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(TreeOf(folder.Path()),
              ElementsAre(Pair("out/", ""), Pair("out/GOOD", "good"), Pair("x", testing::_)));
}

TEST_F(RarExtract, UnpacksTheItemInHandByItsOwnWalk) {
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

}  // namespace
