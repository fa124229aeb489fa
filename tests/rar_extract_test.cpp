// Unpacking RAR archives: places, questions, passwords, volumes, damage, and
// what a hostile archive cannot reach.
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <new>

#include "support/rartest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::DialogAnswer;
using testsupport::Exists;
using testsupport::RarFixture;
using testsupport::RarItem;
using testsupport::ReadFile;
using testsupport::TreeOf;
using testsupport::TypePassword;
using testsupport::WriteFile;

constexpr UINT kYes = 1003;
constexpr UINT kNo = 1002;
constexpr UINT kCancel = 1001;

class RarExtract : public testsupport::RarTest {
 protected:
  void Set(INIUNPACK settings) { unpacker.SetIni(settings); }
  mode_t ModeOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(lstat(folder.Path("out/" + name).c_str(), &status), 0) << name;
    return status.st_mode & 07777;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& [name, content] : Out()) names.push_back(name);
    return names;
  }
};

TEST_F(RarExtract, PutsItemsInTheirPlaces) {
  ASSERT_TRUE(Open("tree.rar"));
  const struct {
    INIUNPACK settings;
    const wchar_t* folder;
    std::vector<std::string> names;
  } cases[] = {
      {{}, nullptr, {"DOCS/", "DOCS/A.TXT", "DOCS/SUB/", "DOCS/SUB/NUMBERS", "EMPTY/", "TOP.TXT"}},
      {{.bUnpackArchiveNoPaths = 1}, nullptr, {"A.TXT", "NUMBERS", "TOP.TXT"}},
      {{}, L"DOCS\\SUB", {"DOCS/", "DOCS/SUB/", "DOCS/SUB/NUMBERS"}},
      {{.bUnpackFolderRelative = 1}, L"DOCS\\SUB", {"SUB/", "SUB/NUMBERS"}},
      {{}, L"DO", {}},
  };
  for (const auto& [settings, path, names] : cases) {
    const testsupport::TempFolder out;
    Set(settings);
    const bool result = path != nullptr ? unpacker.UnpackFolder(path, out.LibraryPath())
                                        : unpacker.UnpackArchive(out.LibraryPath());
    EXPECT_EQ(result, !names.empty());
    std::vector<std::string> found;
    for (const auto& [name, content] : TreeOf(out.Path())) found.push_back(name);
    EXPECT_EQ(found, names);
  }
  EXPECT_TRUE(unpacker.UnpackFile(L"DOCS\\A.TXT", Target()));
  Set({.bUnpackFileNoPath = 1});
  EXPECT_TRUE(unpacker.UnpackFile(L"DOCS\\SUB\\NUMBERS", Target()));
  EXPECT_THAT(Names(), ElementsAre("DOCS/", "DOCS/A.TXT", "NUMBERS"));
  EXPECT_FALSE(unpacker.UnpackFile(L"DOCS\\NONE", Target()));
  EXPECT_THAT(problems, IsEmpty());
}

TEST_F(RarExtract, ReportsWhatItWritesAndHowFarItIs) {
  ASSERT_TRUE(Open("tree.rar"));
  EXPECT_TRUE(unpacker.UnpackFile(L"DOCS\\SUB\\NUMBERS", Target()));
  EXPECT_THAT(host.fileTreePaths, ElementsAre(Target() + L"\\DOCS", Target() + L"\\DOCS\\SUB",
                                              Target() + L"\\DOCS\\SUB\\NUMBERS"));
  ASSERT_FALSE(host.progressMessages.empty());
  EXPECT_EQ(host.progressMessages.front(), (testsupport::ProgressMessage{0, L"NUMBERS"}));
  EXPECT_EQ(host.progressMessages.back(), (testsupport::ProgressMessage{100, L""}));
  struct stat status {};
  ASSERT_EQ(stat(folder.Path("out/DOCS/SUB/NUMBERS").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtime, 1706933106);
}

TEST_F(RarExtract, TakesSetUidOffAndHeedsTheUmask) {
  const mode_t before = umask(027);
  EXPECT_TRUE(Build({{.path = "U", .data = "u", .mode = 0106777},
                     {.path = "R", .data = "r", .mode = 0100444},
                     {.path = "W", .data = "w", .mode = 0x20, .fromWindows = true}}));
  EXPECT_TRUE(Unpack());
  umask(before);
  EXPECT_EQ(ModeOf("U"), 0750U);
  EXPECT_EQ(ModeOf("R"), 0440U);
  EXPECT_EQ(ModeOf("W"), 0640U);
}

TEST_F(RarExtract, AsksBeforeItReplacesAndStaysInStep) {
  const std::vector<RarItem> items{{.path = "A", .data = "new a"},
                                   {.path = "B", .data = "new b"},
                                   {.path = "C", .data = "new c"}};
  ASSERT_TRUE(Build(items));
  for (const char* name : {"out/A", "out/B", "out/C"}) WriteFile(folder.Path(name), "old");
  host.dialogAnswers = {DialogAnswer::Press(kYes), DialogAnswer::Press(kNo),
                        DialogAnswer::Press(kYes)};
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "new a"), Pair("B", "old"), Pair("C", "new c")));
  ASSERT_EQ(host.dialogs.size(), 3U);
  EXPECT_EQ(host.dialogs[0].texts[1009], L"size: 5 bytes");
  EXPECT_EQ(host.dialogs[0].texts[1006], L"'A'.");

  WriteFile(folder.Path("out/A"), "old");
  host.dialogAnswers = {DialogAnswer::Press(kCancel)};
  EXPECT_FALSE(Unpack());
  EXPECT_EQ(ReadFile(folder.Path("out/A")), "old");
}

TEST_F(RarExtract, KeepsTheExistingFileWhenExtractionFails) {
  Set({});
  WriteFile(folder.Path("out/A"), "old");
  ASSERT_TRUE(
      Build({{.path = "A", .data = "bad", .hasWrongSum = true}, {.path = "B", .data = "b"}}));
  host.messageBoxAnswers = {IDOK};
  EXPECT_TRUE(Unpack()) << "the last file is good";
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"), Pair("B", "b")));
  ASSERT_EQ(host.messageBoxes.size(), 1U);
  EXPECT_EQ(host.messageBoxes[0].text, L"Corrupt file or wrong password.");
  EXPECT_THAT(problems, ElementsAre(Pair(L"A", RarProblem::kDamaged)));
}

TEST_F(RarExtract, NeverReplacesTheArchiveItself) {
  Set({});
  testsupport::RarBuilder builder;
  builder.Add({.path = "x.rar", .data = "self"});
  ASSERT_TRUE(OpenBytes(builder.Build()));
  EXPECT_FALSE(unpacker.UnpackArchive(folder.LibraryPath()));
  EXPECT_EQ(ReadFile(folder.Path("x.rar")), builder.Build());
}

TEST_F(RarExtract, AsksForThePasswordOfFiles) {
  Set({});
  ASSERT_TRUE(Open("encrypted-files.rar"));
  host.dialogAnswers = {TypePassword(L"secret")};
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(host.dialogs.size(), 1U);
  EXPECT_EQ(ReadFile(folder.Path("out/DOCS/A.TXT")), "alpha\n");
  ASSERT_TRUE(Open("solid-encrypted-files.rar"));
  host.dialogAnswers = {TypePassword(L"secret")};
  EXPECT_TRUE(unpacker.UnpackFile(L"TOP.TXT", Target())) << "others come before it";
  EXPECT_EQ(ReadFile(folder.Path("out/TOP.TXT")), "top");
  Set({.bConfirmReplace = 1});
  WriteFile(folder.Path("out/DOCS/SUB/NUMBERS"), "old");
  WriteFile(folder.Path("out/TOP.TXT"), "old");
  WriteFile(folder.Path("out/DOCS/A.TXT"), "old");
  host.dialogAnswers = {DialogAnswer::Press(kNo), DialogAnswer::Press(kYes),
                        TypePassword(L"secret"), DialogAnswer::Press(kYes)};
  EXPECT_TRUE(Unpack()) << "it builds on a file that was kept";
  EXPECT_EQ(ReadFile(folder.Path("out/DOCS/SUB/NUMBERS")), "old");
  EXPECT_EQ(ReadFile(folder.Path("out/DOCS/A.TXT")), "alpha\n");
}

TEST_F(RarExtract, TellsWrongEmptyAndCancelledPasswordsApart) {
  ASSERT_TRUE(Open("encrypted-files.rar"));
  WriteFile(folder.Path("out/DOCS/A.TXT"), "old");
  Set({});
  host.dialogAnswers = std::deque<DialogAnswer>(3, TypePassword(L"wrong"));
  host.messageBoxAnswers = std::deque<int>(3, IDOK);
  Unpack();
  EXPECT_THAT(problems, ElementsAre(Pair(testing::_, RarProblem::kWrongPassword),
                                    Pair(testing::_, RarProblem::kWrongPassword),
                                    Pair(testing::_, RarProblem::kWrongPassword)));
  EXPECT_EQ(host.messageBoxes[0].text, L"The specified password is incorrect.");
  EXPECT_TRUE(Exists(folder.Path("out/EMPTY"))) << "the run goes on";

  for (const DialogAnswer& answer :
       {TypePassword(L""), DialogAnswer::Press(IDCANCEL), DialogAnswer::CannotRun()}) {
    problems.clear();
    host.dialogAnswers = {answer};
    EXPECT_FALSE(Unpack());
    EXPECT_THAT(problems, ElementsAre(Pair(testing::_, RarProblem::kNoPassword)));
    EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kNoPassword) << "the run ended there";
  }
  EXPECT_EQ(host.messageBoxes.size(), 3U) << "no message for these";
  EXPECT_EQ(ReadFile(folder.Path("out/DOCS/A.TXT")), "old");
}

TEST_F(RarExtract, WritesNoPasswordBeyondTheEnginesBuffer) {
  std::array<char, 16> buffer{};
  buffer.fill('#');
  const auto ask = [&](const std::wstring& password, LPARAM capacity) {
    host.dialogAnswers = {TypePassword(password)};
    CRarUnpacker& asked = unpacker;
    return unpacker.CallbackProc(2, reinterpret_cast<LPARAM>(&asked),
                                 reinterpret_cast<LPARAM>(buffer.data()), capacity);
  };
  EXPECT_EQ(ask(L"1234567", 8), 0);
  EXPECT_STREQ(buffer.data(), "1234567");
  buffer.fill('#');
  EXPECT_EQ(ask(L"12345678", 8), -1);
  EXPECT_EQ(std::string(buffer.data(), 16), std::string(16, '#'));
}

TEST_F(RarExtract, JoinsVolumesAndNamesTheMissingOne) {
  ASSERT_TRUE(Open("set.part1.rar"));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("BIG.TXT", "TOP.TXT"));
  const std::string big = ReadFile(folder.Path("out/BIG.TXT"));
  EXPECT_EQ(big.size(), 2692U);

  // From its midst, only what begins there comes out.
  ASSERT_TRUE(Open("set.part3.rar"));
  Set({});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"BIG.TXT", RarProblem::kBeginsEarlier)));
  EXPECT_EQ(ReadFile(folder.Path("out/BIG.TXT")), big);

  for (const char* part : {"set.part1.rar", "set.part2.rar"}) {
    WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
  }
  problems.clear();
  std::wstring missing;
  unpacker.SetProblemReport([&](const std::wstring&, RarProblem problem, const std::wstring& name) {
    problems.push_back({L"", problem});
    missing = name;
  });
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("set.part1.rar")));
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"", RarProblem::kMissingVolume)));
  EXPECT_EQ(missing, folder.LibraryPath("set.part3.rar"));
  EXPECT_EQ(ReadFile(folder.Path("out/BIG.TXT")), big) << "what was there is back";
}

TEST_F(RarExtract, LeavesNothingOfAnInterruptedFileAndEndsTheRun) {
  ASSERT_TRUE(Build({{.path = "A", .data = "a"},
                     {.path = "BIG", .data = std::string(3000000, 'x')},
                     {.path = "C", .data = "c"}}));
  host.onPendingEvents = [&] {
    if (host.fileTreePaths.size() == 1) host.PostStopFromButton();
  };
  host.messageBoxAnswers = {IDNO, IDYES};
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "a")));
  ASSERT_EQ(host.messageBoxes.size(), 2U);
  EXPECT_EQ(host.messageBoxes[0].text, L"Interrupt the unpack?");
  EXPECT_THAT(problems, IsEmpty());
}

TEST_F(RarExtract, PassesOnWhatTheHostThrows) {
  ASSERT_TRUE(Build({{.path = "A", .data = "a"}}));
  host.onPendingEvents = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Unpack(), std::bad_alloc);
  host.onPendingEvents = nullptr;
  EXPECT_TRUE(Unpack());
}

TEST_F(RarExtract, MakesSafeLinksAndCopies) {
  ASSERT_TRUE(Open("links.rar"));
  EXPECT_TRUE(Unpack());
  const std::string numbers = ReadFile(folder.Path("out/D/SAME2"));
  EXPECT_THAT(Out(), ElementsAre(Pair("D/", ""), Pair("D/HARD", "one"), Pair("D/ONE", "one"),
                                 Pair("D/SAME1", numbers), Pair("D/SAME2", numbers),
                                 Pair("D/SOFT@", "ONE"), Pair("D/UP@", "..")));
  struct stat hard {};
  struct stat one {};
  ASSERT_EQ(stat(folder.Path("out/D/HARD").c_str(), &hard), 0);
  ASSERT_EQ(stat(folder.Path("out/D/ONE").c_str(), &one), 0);
  EXPECT_EQ(hard.st_ino, one.st_ino);

  const testsupport::TempFolder alone;
  EXPECT_TRUE(unpacker.UnpackFile(L"D\\HARD", alone.LibraryPath()));
  EXPECT_THAT(TreeOf(alone.Path()), ElementsAre(Pair("D/", ""), Pair("D/HARD", "one")))
      << "it comes out with the data of the file that it names";
}

TEST_F(RarExtract, RefusesLinksThatLeadOut) {
  WriteFile(folder.Path("planted"), "untouched");
  std::vector<RarItem> items;
  for (const char* target : {"../planted", "/etc/passwd", "sub/../../planted", "..", "a/.."}) {
    items.push_back(
        {.path = "L" + std::to_string(items.size()), .redirection = 1, .redirectsTo = target});
  }
  items.push_back({.path = "deep/out", .redirection = 1, .redirectsTo = "../../planted"});
  items.push_back({.path = "H", .redirection = 4, .redirectsTo = "../planted"});
  items.push_back({.path = "F", .redirection = 5, .redirectsTo = "planted"});
  items.push_back({.path = "SELF", .redirection = 4, .redirectsTo = "SELF"});
  ASSERT_TRUE(Build(items));
  // Where the engine would look for the sources of links and copies.
  const std::string before = std::filesystem::current_path();
  ASSERT_EQ(chdir(folder.Path().c_str()), 0);
  Unpack();
  EXPECT_FALSE(unpacker.UnpackFile(L"H", Target()));
  EXPECT_FALSE(unpacker.UnpackFile(L"SELF", Target()));
  ASSERT_EQ(chdir(before.c_str()), 0);
  EXPECT_THAT(Names(), ElementsAre("deep/"));
  EXPECT_EQ(problems.size(), items.size() + 2);

  ASSERT_TRUE(
      OpenBytes(testsupport::BuildRar4({.path = "L", .data = "x/../../planted", .mode = 0120777})));
  EXPECT_FALSE(Unpack());
  ASSERT_TRUE(OpenBytes(testsupport::BuildRar4({.path = "S", .data = "x/y", .mode = 0120777})));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("S@", "deep/"));
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
}

TEST_F(RarExtract, CopiesNothingThatTheRunDidNotWrite) {
  WriteFile(folder.Path("out/MINE"), "private");
  ASSERT_TRUE(Build({{.path = "COPY", .redirection = 5, .redirectsTo = "MINE"}}));
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(problems, ElementsAre(Pair(L"COPY", RarProblem::kNoSource)));
  EXPECT_THAT(Names(), ElementsAre("MINE"));
}

TEST_F(RarExtract, NeverWritesThroughLinks) {
  WriteFile(folder.Path("outside/planted"), "untouched");
  const auto plant = [&](const char* to, const std::string& name) {
    ASSERT_EQ(symlink(to, folder.Path("out/" + name).c_str()), 0);
  };
  plant("../outside/planted", "FILE");
  plant("../outside", "DIR");
  ASSERT_EQ(link(folder.Path("outside/planted").c_str(), folder.Path("out/HARD").c_str()), 0);
  Set({});
  ASSERT_TRUE(Build({{.path = "FILE", .data = "evil"},
                     {.path = "DIR/planted", .data = "evil"},
                     {.path = "OWN", .redirection = 1, .redirectsTo = "HERE"},
                     {.path = "OWN", .data = "evil"},
                     {.path = "OWN/X", .data = "evil"},
                     {.path = "HARD", .data = "mine"}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(TreeOf(folder.Path("outside")), ElementsAre(Pair("planted", "untouched")));
  EXPECT_THAT(Out(), ElementsAre(Pair("DIR@", "../outside"), Pair("FILE@", "../outside/planted"),
                                 Pair("HARD", "mine"), Pair("OWN@", "HERE")));
}

TEST_F(RarExtract, LeavesLinksAboveTheTargetAlone) {
  ASSERT_EQ(symlink("out", folder.Path("link").c_str()), 0);
  ASSERT_TRUE(Open("tree.rar"));
  EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("link")));
  Set({.bUnpackFileNoPath = 1});
  EXPECT_TRUE(unpacker.UnpackFile(L"TOP.TXT", folder.LibraryPath("link/DOCS")));
  EXPECT_TRUE(Exists(folder.Path("out/DOCS/TOP.TXT")));
  EXPECT_EQ(std::filesystem::read_symlink(folder.Path("link")), "out");
}

TEST_F(RarExtract, WritesNothingForHostileNames) {
  WriteFile(folder.Path("planted"), "untouched");
  std::vector<RarItem> items;
  for (const std::string name :
       {"../planted", "/planted", "a/../../planted", "C:/x", "", ".", "..", "a//b", "a/./b"}) {
    items.push_back({.path = name, .data = "evil"});
  }
  items.push_back({.path = std::string(1024, 'x'), .data = "evil"});
  items.push_back({.path = "../up", .mode = 0x10, .isFolder = true});
  items.push_back({.path = "GOOD", .data = "good"});
  ASSERT_TRUE(Build(items));
  EXPECT_TRUE(Unpack());
  Set({.bUnpackFileNoPath = 1, .bUnpackArchiveNoPaths = 1});
  Unpack();
  unpacker.UnpackFile(L"..\\planted", Target());
  EXPECT_THAT(Out(), ElementsAre(Pair("GOOD", "good")));
  EXPECT_EQ(TreeOf(folder.Path()).size(), 4U) << "x.rar, planted, out and GOOD";
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
}

TEST_F(RarExtract, UnpacksTheItemInHandByItsOwnWalk) {
  ASSERT_TRUE(Open("tree.rar"));
  RARFILEFULLINFO info;
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS\\A.TXT", info));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"in\\NEW", Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/in/NEW")), "alpha\n");
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"AGAIN", Target())) << "it is done with";
  EXPECT_TRUE(unpacker.FindNextFile() && unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strPath, L"DOCS\\SUB\\NUMBERS") << "the walk is in step";
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"..\\X", Target()));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(std::wstring(3000, L'x'), Target()));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"X", folder.LibraryPath("nowhere")));
}

}  // namespace
