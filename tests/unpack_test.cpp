// What the unpackers of all formats do alike: where things come out, questions,
// interruption, and what no archive can reach.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "support/archives.h"
#include "support/bytes.h"
#include "support/formats.h"
#include "support/rooms.h"
#include "support/unpacktest.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemResult;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::DialogAnswer;
using testsupport::Items;
using testsupport::kCancel;
using testsupport::kNo;
using testsupport::kYes;
using testsupport::Pattern;
using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

template <class F>
class Unpacking : public testsupport::UnpackTest<typename F::Unpacker> {
 protected:
  void Make(const Items& items) {
    F::kWrite(this->folder.Path("x"), items);
    ASSERT_TRUE(this->Open());
    ASSERT_TRUE(this->unpacker.FindFile());
    this->Set({});
  }
  /// DOCS\SUB\X.TXT, DOCS\A.TXT, DOCS2\B.TXT, EMPTY, TOP.TXT
  void MakeTree() {
    Make({{"DOCS/"},
          {"DOCS/A.TXT", "a"},
          {"DOCS/SUB/"},
          {"DOCS/SUB/X.TXT", "x"},
          {"DOCS2/"},
          {"DOCS2/B.TXT", "b"},
          {"EMPTY/"},
          {"TOP.TXT", "top"}});
  }
};

TYPED_TEST_SUITE(Unpacking, testsupport::Formats, testsupport::FormatNames);

TYPED_TEST(Unpacking, PutsItemsInTheirPlaces) {
  this->MakeTree();
  const std::vector<std::string> all{"DOCS/",  "DOCS/A.TXT",  "DOCS/SUB/", "DOCS/SUB/X.TXT",
                                     "DOCS2/", "DOCS2/B.TXT", "EMPTY/",    "TOP.TXT"};
  const struct {
    INIUNPACK settings;
    const wchar_t* folder = nullptr;
    std::vector<std::string> names;
  } cases[] = {
      {{}, nullptr, all},
      {{.bUnpackArchiveNoPaths = 1}, nullptr, {"A.TXT", "B.TXT", "TOP.TXT", "X.TXT"}},
      {{}, L"DOCS\\SUB", {"DOCS/", "DOCS/SUB/", "DOCS/SUB/X.TXT"}},
      {{.bUnpackFolderRelative = 1}, L"DOCS\\SUB", {"SUB/", "SUB/X.TXT"}},
      {{.bUnpackFolderRelative = 1}, L"DOCS", {all.begin(), all.begin() + 4}},
      {{}, L"DO", {}},
  };
  for (const auto& [settings, path, names] : cases) {
    const TempFolder place;
    mkdir(place.Path("out").c_str(), 0777);
    const std::wstring target = place.LibraryPath("out");
    this->Set(settings);
    const bool result = path != nullptr ? this->unpacker.UnpackFolder(path, target)
                                        : this->unpacker.UnpackArchive(target);
    EXPECT_TRUE(result || names.empty());
    EXPECT_EQ(this->NamesIn(place), names);
  }
  this->host.fileTreePaths.clear();
  this->Set({.bUnpackFileNoPath = 1});
  EXPECT_TRUE(this->Unpack(L"DOCS\\SUB\\X.TXT"));
  EXPECT_THAT(this->Names(), ElementsAre("X.TXT"));
  this->Set({});
  EXPECT_TRUE(this->Unpack(L"DOCS\\A.TXT"));
  EXPECT_THAT(this->Names(), ElementsAre("DOCS/", "DOCS/A.TXT", "X.TXT"));
  for (const wchar_t* none : {L"DOCS\\NONE", L"DOCS", L""}) EXPECT_FALSE(this->Unpack(none));
  const std::set<std::wstring> reports(this->host.fileTreePaths.begin(),
                                       this->host.fileTreePaths.end());
  const std::wstring out = this->Target();
  EXPECT_THAT(reports, ElementsAre(out + L"\\DOCS", out + L"\\DOCS\\A.TXT", out + L"\\X.TXT"));
}

TYPED_TEST(Unpacking, BringsFilesOutWholeAndDated) {
  const testsupport::TimeZone zone("UTC");
  Items items;
  std::map<std::string, std::string> expected;
  for (const int size : {0, 1, 2047, 2048, 2049, 262144, 262145, 700'001}) {
    items.push_back({"F" + std::to_string(1'000'000 + size), Pattern(std::size_t(size))});
    expected[items.back().path] = items.back().data;
  }
  this->Make(items);
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_TRUE(this->Out() == expected);
  for (const auto& [name, data] : expected) {
    EXPECT_EQ(this->StatusOf(name).st_mtime, testsupport::kItemTime) << name;
  }
  ASSERT_FALSE(this->host.progressMessages.empty());
  EXPECT_EQ(this->host.progressMessages.front(), (testsupport::ProgressMessage{0, L"F1000000"}));
  // The engine for 7z tells of whole files late, or not at all.
  if (!std::is_same_v<typename TypeParam::Unpacker, C7zUnpacker>) {
    EXPECT_EQ(this->host.progressMessages.back(), (testsupport::ProgressMessage{100, L""}));
  }

  // Out of order, so that shared reads meet a file from either side.
  for (const std::size_t i : {6U, 0U, 3U, 2U, 7U, 1U}) {
    std::filesystem::remove(this->folder.Path("out/" + items[i].path));
    EXPECT_TRUE(this->Unpack({items[i].path.begin(), items[i].path.end()}));
  }
  EXPECT_TRUE(this->Out() == expected);
}

TYPED_TEST(Unpacking, TellsEachItemByItsPlaceInTheWalk) {
  this->MakeTree();
  const std::map<ULONGLONG, std::wstring> walk = this->Positions();
  this->Listen();
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  std::map<ULONGLONG, std::wstring> reported;
  for (const auto& report : this->told) {
    EXPECT_TRUE(reported.insert({report.position, report.path}).second) << "told twice";
    const bool isFolder = report.result == ItemResult::kFolderMade;
    EXPECT_TRUE(isFolder || report.result == ItemResult::kWritten);
  }
  EXPECT_EQ(reported, walk);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kNone, L"")));

  this->Listen();
  EXPECT_TRUE(this->Unpack(L"DOCS\\SUB\\X.TXT"));
  ASSERT_EQ(this->told.size(), 1U);
  EXPECT_EQ(walk.at(this->told[0].position), L"DOCS\\SUB\\X.TXT");
}

TYPED_TEST(Unpacking, TellsWhatALaterItemReplaced) {
  this->Make({{"A/X", "first"}, {"B/X", "second"}});
  const std::map<ULONGLONG, std::wstring> walk = this->Positions();
  this->Set({.bUnpackArchiveNoPaths = 1});
  this->Listen();
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_THAT(this->Out(), ElementsAre(Pair("X", "second")));
  std::vector<std::pair<std::wstring, ItemResult>> results;
  for (const auto& report : this->told) {
    results.emplace_back(walk.at(report.position), report.result);
  }
  EXPECT_THAT(results,
              ElementsAre(Pair(L"A\\X", ItemResult::kWritten), Pair(L"A\\X", ItemResult::kReplaced),
                          Pair(L"B\\X", ItemResult::kWritten)));
}

TYPED_TEST(Unpacking, WorksWithoutWindows) {
  this->MakeTree();
  this->unpacker.SetHandleDialogProgress(nullptr);
  this->unpacker.SetWndFileTree(nullptr);
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_EQ(this->Names().size(), 8U);
  EXPECT_THAT(this->host.progressMessages, IsEmpty());
}

TYPED_TEST(Unpacking, AsksBeforeItReplaces) {
  this->Make({{"A", "new a"}, {"B", "new b"}, {"C", "new c"}});
  this->Set({.bConfirmReplace = 1});
  for (const char* name : {"out/A", "out/B", "out/C"}) WriteFile(this->folder.Path(name), "old");
  this->host.dialogAnswers = {DialogAnswer::Press(kNo), DialogAnswer::Press(kYes),
                              DialogAnswer::Press(kCancel)};
  EXPECT_FALSE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_THAT(this->Out(), ElementsAre(Pair("A", "old"), Pair("B", "new b"), Pair("C", "old")));
  ASSERT_EQ(this->host.dialogs.size(), 3U);
  EXPECT_EQ(this->host.dialogs[0].texts[1006], L"'A'.");
  EXPECT_EQ(this->host.dialogs[0].texts[1009], L"size: 5 bytes");
  EXPECT_EQ(this->host.fileTreePaths.size(), 1U) << "a file that was kept is not reported";

  // A protected file loses its protection, and only when it is to be replaced.
  chmod(this->folder.Path("out/A").c_str(), 0444);
  this->host.dialogAnswers = {DialogAnswer::Press(kNo), DialogAnswer::Press(kYes)};
  EXPECT_FALSE(this->Unpack(L"A"));
  EXPECT_EQ(this->StatusOf("A").st_mode & 0777, 0444U);
  EXPECT_TRUE(this->Unpack(L"A"));
  EXPECT_EQ(this->Out("A"), "new a");
}

TYPED_TEST(Unpacking, LeavesNothingOfAnInterruptedFileAndEndsTheRun) {
  this->Make({{"A", "a"}, {"BIG", Pattern(9'000'000)}, {"C", "c"}});
  this->StopIn(L"BIG", {IDNO});
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_TRUE(this->Out("BIG") == Pattern(9'000'000));
  ASSERT_EQ(this->host.messageBoxes.size(), 1U);
  EXPECT_EQ(this->host.messageBoxes[0].text, L"Interrupt the unpack?");
  EXPECT_EQ(this->host.messageBoxes[0].caption, L"Morvane Archiver");
  EXPECT_EQ(this->host.messageBoxes[0].type, 0x24U);
  for (const char* name : {"out/BIG", "out/C"}) {
    std::filesystem::remove(this->folder.Path(name));
  }
  this->StopIn(L"BIG", {IDYES});
  this->Listen();
  EXPECT_FALSE(this->unpacker.UnpackArchive(this->Target()));
  EXPECT_THAT(this->Names(), ElementsAre("A"));
  ASSERT_EQ(this->told.size(), 3U);
  EXPECT_EQ(this->told[0].result, ItemResult::kWritten);
  EXPECT_EQ(this->told[1].result, ItemResult::kFailed);
  EXPECT_EQ(this->told[2].result, ItemResult::kNotReached);
  for (const std::size_t i : {1U, 2U}) EXPECT_EQ(this->told[i].reason, ItemReason::kInterrupted);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kInterrupted, L"")));
  this->StopIn(L"BIG", {IDYES});
  EXPECT_FALSE(this->Unpack(L"BIG"));
  EXPECT_THAT(this->Names(), ElementsAre("A"));
  EXPECT_EQ(this->host.messageBoxes.size(), 3U);
}

/// What a host might throw in a callback.
struct HostError {};

TYPED_TEST(Unpacking, PassesOnWhatTheHostThrows) {
  this->Make({{"A", "a"}, {"BIG", Pattern(9'000'000)}, {"C", "c"}});
  const auto fail = [] { throw HostError(); };
  this->host.onPendingEvents = fail;
  EXPECT_THROW(this->unpacker.UnpackArchive(this->Target()), HostError);
  this->host.onPendingEvents = nullptr;
  this->host.onProgress = fail;
  EXPECT_THROW(this->Unpack(L"BIG"), HostError);
  this->host.onProgress = nullptr;
  EXPECT_FALSE(testsupport::Exists(this->folder.Path("out/BIG"))) << "what is not whole goes";
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->Target())) << "the object can be used on";
  EXPECT_TRUE(this->Out("BIG") == Pattern(9'000'000));
}

TYPED_TEST(Unpacking, WritesNothingForHostileNames) {
  WriteFile(this->folder.Path("planted"), "untouched");
  Items items;
  for (const char* name : {"../planted", "a/../../planted", "/planted", "..", ".", "../..", "C:x",
                           "b//c", "b/./c", "C:/x"}) {
    items.push_back({name, "evil"});
  }
  items.push_back({"GOOD", "good"});
  this->Make(items);
  this->unpacker.UnpackArchive(this->Target());
  this->Set({.bUnpackFileNoPath = 1, .bUnpackArchiveNoPaths = 1});
  this->unpacker.UnpackArchive(this->Target());
  for (const wchar_t* path : {L"..\\planted", L"\\planted", L"..", L"../planted"}) {
    EXPECT_FALSE(this->Unpack(path));
  }
  for (const auto& [name, content] : TreeOf(this->folder.Path()))
    EXPECT_NE(content, "evil") << name;
  EXPECT_EQ(this->Out("GOOD"), "good");
  EXPECT_EQ(ReadFile(this->folder.Path("planted")), "untouched");
}

TYPED_TEST(Unpacking, MakesNoFoldersForAPathThatTheSystemCannotHold) {
  std::string deep = this->folder.Path("out");
  while (deep.size() < 3'930) deep += "/" + std::string(100, 'd');
  std::filesystem::create_directories(deep);
  const std::string path = "A/B/" + std::string(60, 'C') + "/" + std::string(150, 'D');
  this->Make({{path, "x"}});
  const std::wstring target = platform::ToLibraryPath(deep);
  EXPECT_FALSE(this->unpacker.UnpackFile(platform::ToLibraryPath(path), target));
  EXPECT_TRUE(std::filesystem::is_empty(deep));
}

TYPED_TEST(Unpacking, NeverGoesThroughLinksBelowTheTarget) {
  WriteFile(this->folder.Path("outside/PLANTED"), "untouched");
  ASSERT_EQ(symlink("../outside/PLANTED", this->folder.Path("out/FILE").c_str()), 0);
  ASSERT_EQ(symlink("../outside", this->folder.Path("out/DIR").c_str()), 0);
  ASSERT_EQ(symlink("nowhere", this->folder.Path("out/GONE").c_str()), 0);
  this->Make({{"DIR/PLANTED", "evil"}, {"DIR/SUB/X", "evil"}, {"FILE", "evil"}, {"GONE", "evil"}});
  this->unpacker.UnpackArchive(this->Target());
  EXPECT_FALSE(this->Unpack(L"DIR\\PLANTED"));
  EXPECT_FALSE(this->Unpack(L"FILE"));
  EXPECT_THAT(TreeOf(this->folder.Path("outside")), ElementsAre(Pair("PLANTED", "untouched")));
  EXPECT_THAT(this->Out(),
              ElementsAre(Pair("DIR@", "../outside"), Pair("FILE@", "../outside/PLANTED"),
                          Pair("GONE@", "nowhere")));
  // A link to the target itself is the user's own.
  ASSERT_EQ(symlink("outside", this->folder.Path("link").c_str()), 0);
  EXPECT_TRUE(this->unpacker.UnpackArchive(this->folder.LibraryPath("link")));
  EXPECT_TRUE(testsupport::Exists(this->folder.Path("outside/DIR/SUB/X")));
}

TYPED_TEST(Unpacking, NeverOverwritesTheArchiveItself) {
  this->Make({{"x", Pattern(300'000)}});
  const std::string archive = ReadFile(this->folder.Path("x"));
  this->Listen();
  EXPECT_FALSE(this->unpacker.UnpackArchive(this->folder.LibraryPath()));
  ASSERT_EQ(this->told.size(), 1U);
  EXPECT_TRUE(this->IsOfArchive(this->told[0]));
  EXPECT_TRUE(ReadFile(this->folder.Path("x")) == archive);
}

TYPED_TEST(Unpacking, GoesOnWhereItCannotWrite) {
  this->Make({{"A/X", "x"}, {"GOOD", "good"}, {"LAST", "last"}});
  WriteFile(this->folder.Path("out/A"), "in the way");
  mkdir(this->folder.Path("out/LAST").c_str(), 0777);
  this->unpacker.UnpackArchive(this->Target());
  EXPECT_THAT(this->Out(),
              ElementsAre(Pair("A", "in the way"), Pair("GOOD", "good"), Pair("LAST/", "")));
  EXPECT_FALSE(this->unpacker.UnpackFile(L"GOOD", this->folder.LibraryPath("nowhere")));
}

TYPED_TEST(Unpacking, RefusesWhatIsNoArchive) {
  WriteFile(this->folder.Path("empty"), "");
  WriteFile(this->folder.Path("text"), std::string(70'000, 'x'));
  for (const char* name : {"missing", "empty", "text", "out"}) {
    EXPECT_FALSE(this->Open(name)) << name;
    EXPECT_FALSE(this->unpacker.FindFile()) << name;
    this->unpacker.UnpackArchive(this->Target());
    EXPECT_FALSE(this->Unpack(L"A")) << name;
    EXPECT_THAT(this->Names(), IsEmpty()) << name;
  }
  this->Make({{"A", "a"}});
  EXPECT_TRUE(this->Unpack(L"A"));
}

}  // namespace
