// 7z archives, made by the engine's own command: what is listed, what comes out
// and where, questions, passwords, split sets, damage.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "sevenzip/volumesequence.h"
#include "support/bytes.h"
#include "support/command.h"
#include "support/rooms.h"
#include "support/unpacktest.h"

namespace {

using sevenzip::CVolumeSequence;
using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::DialogAnswer;
using testsupport::ReadFile;
using testsupport::RunCommand;
using testsupport::TreeOf;
using testsupport::TypePassword;
using testsupport::WriteFile;

/// Text that compresses well but not to nothing.
std::string Numbers(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += std::to_string(i * 7919LL) + "\n";
  return text;
}

class TestedUnpacker : public C7zUnpacker {
 public:
  using C7zUnpacker::m_bReusePassword;
};

class SevenZip : public testsupport::UnpackTest<TestedUnpacker> {
 protected:
  /// A file of the tree that archives are made of.
  void Put(const std::string& name, const std::string& content) {
    WriteFile(folder.Path("in/" + name), content);
  }
  /// Archives the tree with the engine's own command.
  void Make(const std::string& switches, const std::string& name = "x.7z") {
    Run("cd '" + folder.Path("in") + "' && 7z a -bso0 -bsp0 " + switches + " '" +
        folder.Path(name) + "' .");
  }
  void Run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }
  bool OpenSet(const std::string& name) {
    return unpacker.OpenMultiVolumeArchive(folder.LibraryPath(name));
  }
  std::map<std::string, std::string> In() const { return TreeOf(folder.Path("in")); }
};

TEST_F(SevenZip, ListsFoldersAndFilesAsTheyAre) {
  const testsupport::TimeZone zone("UTC");
  Put("docs/a.txt", "hello\n");
  Put("docs/img/n.png", Numbers(20000));
  Put("old.x/readme", "");
  Run("touch -d 2001-02-03T04:05:07Z '" + folder.Path("in/docs/a.txt") + "'");
  Make("-mx1 -ms=off");
  ASSERT_TRUE(Open("x.7z"));
  std::map<std::wstring, SEVENZIPFILEFULLINFO> records;
  for (const auto& record : Records()) records[record.strPath] = record;
  const auto& top = records.at(L"docs");
  EXPECT_TRUE(top.bFolder && !top.bInFolder);
  const auto& inner = records.at(L"docs\\img");
  EXPECT_TRUE(inner.bInFolder && !inner.bFolder);
  EXPECT_EQ(inner.strName, L"");
  const auto& file = records.at(L"docs\\a.txt");
  EXPECT_EQ(file.strName + L"|" + file.strTitle + L"|" + file.strExt, L"a.txt|a|txt");
  EXPECT_EQ(file.nSize, 6U);
  EXPECT_EQ(file.nCRC, 0x363A3020U);
  EXPECT_EQ(file.nDateTime, (21U << 9 | 2U << 5 | 3U) << 16 | (4U << 11 | 5U << 5 | 3U));
  EXPECT_EQ(file.nAttributes >> 16 & 0777, 0644U);
  EXPECT_TRUE(file.strMethod.starts_with(L"LZMA2:")) << file.strMethod;
  EXPECT_EQ(records.at(L"old.x\\readme").strExt, L"x\\readme");
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"DOCS\\A.TXT"),
              testing::EndsWith(L", Size - 6 bytes, Packed - 10 bytes, Ratio - 166%, "
                                L"CRC - 363a3020"));
  EXPECT_THAT(unpacker.GetFolderOutputInfo(L"docs"),
              testing::StartsWith(L"Files - 2, Folders - 1"));
  EXPECT_TRUE(unpacker.IsFolder(L"img") && !unpacker.IsFolder(L"IMG"));
}

TEST_F(SevenZip, AnswersNothingWithoutAnArchive) {
  EXPECT_FALSE(unpacker.CloseArchive());
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(), L"");
  // The engine is there, but no file: what was made for it is released.
  EXPECT_FALSE(Open("none.7z"));
  EXPECT_TRUE(unpacker.CloseArchive());

  Put("one", "1");
  Make("");
  ASSERT_TRUE(Open("x.7z") && unpacker.FindFile());
  SEVENZIPFILESHORTINFO info;
  EXPECT_FALSE(unpacker.GetFileShortInfo(info)) << "before the first and behind the last";
  EXPECT_EQ(Records().size(), 1U);
  unpacker.FindNextFile();
  EXPECT_FALSE(unpacker.GetFileShortInfo(info));
  C7zUnpacker copy(unpacker);
  EXPECT_FALSE(copy.FindFile()) << "a copy has no archive";
}

/// As some writers mark folders; this one has data all the same.
TEST_F(SevenZip, WritesNothingOfAFolderIntoTheFileBeforeIt) {
  Put("a", "first");
  Put("bX", "second");
  Make("-mx0 -mhc=off");
  std::string bytes = ReadFile(folder.Path("x.7z"));
  const std::size_t name = bytes.find(std::string("b\0X\0", 4));
  ASSERT_NE(name, bytes.npos);
  bytes[name + 2] = '/';
  const auto number = [&](std::size_t at) {
    return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
  };
  const auto putSum = [&](std::size_t at, std::size_t from, std::size_t length) {
    const auto* start = reinterpret_cast<const Bytef*>(bytes.data() + from);
    const std::string sum = testsupport::Little(crc32(0, start, static_cast<uInt>(length)), 4);
    bytes.replace(at, 4, sum);
  };
  const auto offset = static_cast<std::size_t>(number(12));
  putSum(28, 32 + offset, static_cast<std::size_t>(number(20)));
  putSum(8, 12, 20);
  ASSERT_TRUE(OpenBytes(bytes));
  Set({});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("a", "b/"));
  EXPECT_EQ(Out("a"), "first");
  WriteFile(folder.Path("out/a"), "existing");
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out("a"), "first");
}

TEST_F(SevenZip, GoesOnWhereAFileCannotBeCreated) {
  for (const char* name : {"a", "b/long", "c"}) Put(name, name);
  Make("-mx1");
  // 86 characters of 3 bytes make a name that no file may have.
  std::string longName;
  for (int i = 0; i < 86; ++i) longName += "\xE2\x82\xAC";
  Run("cd '" + folder.Path("in") + "' && 7z rn -bso0 -bsp0 '" + folder.Path("x.7z") + "' b/long '" +
      longName + "'");
  ASSERT_TRUE(Open("x.7z"));
  Set({});
  Listen();
  EXPECT_FALSE(Unpack());
  EXPECT_EQ(told.back().result, morvunp::ItemResult::kNotReached);
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true}));
  Listen();
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("a", "b/", "c"));
  const auto tooLong = std::find_if(told.begin(), told.end(), [](const Told& report) {
    return report.result == morvunp::ItemResult::kFailed;
  });
  ASSERT_NE(tooLong, told.end());
  EXPECT_EQ(tooLong->reason, morvunp::ItemReason::kNameTooLong);
  EXPECT_THAT(ends.back(), testing::Pair(morvunp::ItemReason::kNone, L""));
}

TEST_F(SevenZip, BringsThePlainItemsOutWithoutAPassword) {
  for (const char* name : {"1", "2"}) Put(name, Numbers(100));
  Put("empty", "");
  Put("folder/empty", "");
  Make("-psecret -ms=off");
  ASSERT_TRUE(Open("x.7z"));
  Set({});
  Listen();
  host.dialogAnswers = {DialogAnswer::Press(IDCANCEL)};
  EXPECT_FALSE(Unpack());
  EXPECT_EQ(told.back().result, morvunp::ItemResult::kNotReached);
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true}));
  Listen();
  host.dialogAnswers = {DialogAnswer::Press(IDCANCEL)};
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("empty", "folder/", "folder/empty"));
  EXPECT_EQ(told.size(), Records().size());
  EXPECT_EQ(std::count_if(told.begin(), told.end(),
                          [](const Told& report) {
                            return report.reason == morvunp::ItemReason::kNoPassword;
                          }),
            2);
  EXPECT_TRUE(host.dialogAnswers.empty()) << "asked once";
}

TEST_F(SevenZip, AsksOnceWhereAVolumeIs) {
  Put("1", Numbers(3000));
  Make("-mx0 -v5000b");
  std::filesystem::create_directory(folder.Path("elsewhere"));
  std::filesystem::rename(folder.Path("x.7z.003"), folder.Path("elsewhere/third"));
  std::vector<std::wstring> asked;
  ASSERT_TRUE(unpacker.SetOptions({.onMissingVolume = [&](const std::wstring& name) {
    asked.push_back(name);
    return std::optional(folder.LibraryPath("elsewhere/third"));
  }}));
  ASSERT_TRUE(OpenSet("x.7z.001"));
  EXPECT_THAT(asked, ElementsAre(L"x.7z.003")) << "and for none behind the last";
  Set({});
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out() == In());
}

/// A block of many small files makes the engine tell nothing until its end.
TEST_F(SevenZip, StopsWhileItPassesOver) {
  for (int i = 0; i < 2'000; ++i) Put("f/" + std::to_string(10'000 + i), "x");
  Make("-mx1 -mqs=on");
  ASSERT_TRUE(Open("x.7z"));
  Set({});
  ASSERT_TRUE(unpacker.SetOptions({.pumpAlways = true}));
  Listen();
  host.messageBoxAnswers = {IDYES};
  host.PostStop();
  EXPECT_FALSE(unpacker.UnpackItems(Target(), [this](const morvunp::RoutedItem& item) {
    const bool isLast = item.path == L"f\\11999";
    return isLast ? morvunp::Route::To({Target(), L"last"}) : morvunp::Route::PassOver();
  }));
  EXPECT_THAT(ends, ElementsAre(testing::Pair(morvunp::ItemReason::kInterrupted, L"")));
  EXPECT_THAT(Names(), testing::IsEmpty());
}

TEST_F(SevenZip, UnpacksWhatEveryMethodPacked) {
  Put("docs/a.txt", "hello\n");
  Put("docs/img/n.png", Numbers(20000));
  Put("zero", "");
  Put("b\\s \xF0\x9F\x98\x80", "both kinds of backslash, and a character of two units\n");
  mkdir(folder.Path("in/empty").c_str(), 0777);
  for (const char* method : {"-mx0", "-m0=lzma", "-m0=lzma2 -ms=off", "-m0=ppmd", "-m0=bzip2 -mmt2",
                             "-m0=deflate", "-m0=bcj -m1=lzma2 -mmt2"}) {
    std::filesystem::remove(folder.Path("x.7z"));
    std::filesystem::remove_all(folder.Path("out"));
    mkdir(folder.Path("out").c_str(), 0777);
    Make(method);
    ASSERT_TRUE(Open("x.7z")) << method;
    EXPECT_TRUE(Unpack()) << method;
    EXPECT_EQ(Out(), In()) << method;
  }
}

TEST_F(SevenZip, GivesFilesTheirModesButNoSetUidAndNoLinks) {
  for (const auto& [name, mode] : {std::pair("in/run", 04755U), {"in/locked", 0444U}}) {
    WriteFile(folder.Path(name), "#!\n");
    chmod(folder.Path(name).c_str(), mode);
  }
  symlink("/etc/passwd", folder.Path("in/link").c_str());
  Make("-snl");
  ASSERT_TRUE(Open("x.7z"));
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(StatusOf("run").st_mode & 07777, 0755U);
  EXPECT_EQ(StatusOf("locked").st_mode & 07777, 0444U);
  EXPECT_EQ(Out().at("link"), "/etc/passwd") << "a file that says where the link led";
}

TEST_F(SevenZip, DeletesOnlyTheFileThatWasBeingWritten) {
  Put("1", Numbers(400000));
  Put("2", "two");
  Make("-mx1 -m0=lzma -ms=on");
  ASSERT_TRUE(Open("x.7z"));
  // The engine decodes what comes before: a stop there has no file to delete.
  WriteFile(folder.Path("out/2"), "mine");
  Set({});
  StopIn(L"2", {IDYES});
  EXPECT_FALSE(Unpack(L"2"));
  EXPECT_EQ(Out("2"), "mine");
}

TEST_F(SevenZip, AsksForPasswordsOncePerOperation) {
  Put("a", Numbers(1000));
  Put("b", Numbers(1001));
  Make("-p'p\xC3\xA4ss\xF0\x9F\x98\x80'");
  ASSERT_TRUE(Open("x.7z"));
  host.dialogAnswers = {TypePassword(L"p\u00e4ss\U0001F600")};
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out(), In());
  host.dialogAnswers = {DialogAnswer::Escape()};
  EXPECT_FALSE(unpacker.UnpackFile(L"a", folder.LibraryPath("in")));
  EXPECT_EQ(host.dialogs.size(), 2U);
}

TEST_F(SevenZip, OpensEncryptedNamesWithTheirPasswordOnly) {
  Put("a", "secret");
  Make("-pright -mhe");
  for (const DialogAnswer& wrong :
       {TypePassword(L"wrong"), TypePassword(L""), DialogAnswer::Escape()}) {
    host.dialogAnswers = {wrong};
    EXPECT_FALSE(Open("x.7z") || unpacker.FindFile());
  }
  host.dialogAnswers = {TypePassword(L"right")};
  EXPECT_TRUE(Open("x.7z"));
  unpacker.m_bReusePassword = 1;
  EXPECT_TRUE(Open("x.7z"));
  EXPECT_EQ(Records().size(), 1U);
}

TEST_F(SevenZip, OpensSplitSetsFromTheirFirstVolume) {
  Put("n", Numbers(30000));
  Make("-mx0 -v70k");
  // Its volumes may be links.
  rename(folder.Path("x.7z.002").c_str(), folder.Path("away").c_str());
  symlink("away", folder.Path("x.7z.002").c_str());
  const std::string first = folder.Path("x.7z.001");
  EXPECT_EQ(RunCommand({"extract", first, "-C", folder.Path("out")}).exitCode, 0);
  EXPECT_EQ(Out(), In());
  EXPECT_FALSE(OpenSet("x.7z.002"));
  EXPECT_FALSE(OpenSet("x.7z.0001"));

  // The same pieces with letters, in capitals.
  for (const auto& [digit, letter] : {std::pair('1', 'A'), {'2', 'B'}, {'3', 'C'}, {'4', 'D'}}) {
    rename(folder.Path(std::string("x.7z.00") + digit).c_str(),
           folder.Path(std::string("y.A") + letter).c_str());
  }
  std::filesystem::remove(folder.Path("out/n"));
  ASSERT_TRUE(OpenSet("y.AA"));
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out(), In());
  std::filesystem::remove(folder.Path("y.AC"));
  EXPECT_FALSE(OpenSet("y.AA")) << "a set ends at the first volume that is missing";
}

TEST_F(SevenZip, SaysWhatASetLacks) {
  Put("n", Numbers(30000));
  Make("-mx0 -v70k");
  const std::string last = folder.Path("x.7z.003");
  std::filesystem::resize_file(last, std::filesystem::file_size(last) - 1);
  EXPECT_FALSE(OpenSet("x.7z.001"));
  EXPECT_EQ(unpacker.GetWalkProblem(), morvunp::ItemReason::kCutShort);
  std::filesystem::remove(last);
  EXPECT_FALSE(OpenSet("x.7z.001"));
  EXPECT_FALSE(unpacker.IsListComplete());
  EXPECT_EQ(unpacker.GetWalkProblem(), morvunp::ItemReason::kMissingVolume);
  const auto result = RunCommand({"list", folder.Path("x.7z.001")});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.errors, testing::HasSubstr("a volume of the set is missing"));
}

TEST_F(SevenZip, NeverOverwritesAVolumeOfItsSet) {
  Put("x.7z.002", Numbers(30000));
  Make("-mx0 -v70k");
  const std::string volume = ReadFile(folder.Path("x.7z.002"));
  Set({});
  ASSERT_TRUE(OpenSet("x.7z.001"));
  Listen();
  EXPECT_FALSE(unpacker.UnpackArchive(folder.LibraryPath()));
  ASSERT_EQ(told.size(), 1U);
  EXPECT_TRUE(IsOfArchive(told[0]));
  EXPECT_TRUE(ReadFile(folder.Path("x.7z.002")) == volume);
}

TEST_F(SevenZip, NamesAnItemWithoutANameAfterTheArchive) {
  Put("data", "nameless");
  Run("7z a -bso0 -bsp0 -si '" + folder.Path("set.tar.7z") + "' < '" + folder.Path("in/data") +
      "'");
  ASSERT_TRUE(Open("set.tar.7z"));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("set.tar"));
}

TEST_F(SevenZip, IsTheSameAfterAThousandOpens) {
  Put("a", "1");
  Make("");
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(Open("x.7z")) << i;
  EXPECT_TRUE(Unpack());
}

TEST(SevenZipVolumes, AreCountedOnInDigitsAndLetters) {
  const struct {
    const wchar_t* first;
    int steps;
    const wchar_t* expected;
  } cases[] = {{L"a.7z.001", 1, L"a.7z.002"}, {L"a.7z.001", 999, L"a.7z.1000"},
               {L"a.01", 99, L"a.100"},       {L"b.aa", 26, L"b.ba"},
               {L"b.AA", 1, L"b.AB"},         {L"b.aa", 25 * 26 - 1, L"b.yz"},
               {L"b.aa", 25 * 26, L"b.zaaa"}, {L"b.aa", 25 * 26 + 1, L"b.zaab"},
               {L"b.xaa", 1, L"b.xab"},       {L"aaa", 1, L"aab"}};
  for (const auto& [first, steps, expected] : cases) {
    auto sequence = CVolumeSequence::OfFirstVolume(first);
    ASSERT_TRUE(sequence) << first;
    std::wstring name;
    for (int i = 0; i < steps; ++i) name = sequence->GetNextName();
    EXPECT_EQ(name, expected);
  }
  for (const wchar_t* name : {L"data.7z", L"data.002", L"data.x01", L"data.1", L"data.a", L"."}) {
    EXPECT_FALSE(CVolumeSequence::OfFirstVolume(name)) << name;
  }
}

// The command.

TEST_F(SevenZip, CommandTellsDamageFromSuccess) {
  Put("a", Numbers(3000));
  Put("b", Numbers(3001));
  Make("-mx0");
  std::string bytes = ReadFile(folder.Path("x.7z"));
  bytes[2000] ^= 1;
  WriteFile(folder.Path("x.7z"), bytes);
  // Neither the mode of an item nor the umask makes it escape the check.
  for (const auto& [target, user] : {std::pair("out", testsupport::Process::kUsual),
                                     {"in", testsupport::Process::kCannotReadBack}}) {
    const auto result = RunCommand(
        {"extract", folder.Path("x.7z"), "--overwrite=all", "-C", folder.Path(target)}, {}, user);
    EXPECT_EQ(result.exitCode, 1) << target;
    EXPECT_EQ(result.errors, "morvunp: a: failed: damaged in the archive\n");
  }
  EXPECT_EQ(Out("b"), Numbers(3001));
  bytes[bytes.size() - 3] ^= 1;
  WriteFile(folder.Path("x.7z"), bytes);
  EXPECT_EQ(RunCommand({"list", folder.Path("x.7z")}).exitCode, 2);
}

TEST_F(SevenZip, CommandGoesOnBehindWhatCannotBeWritten) {
  for (const char* name : {"D/a", "D/b", "D/c", "D/d", "E/a"}) Put(name, name);
  Make("-mx0");
  mkdir(folder.Path("out/D").c_str(), 0777);
  mkdir(folder.Path("out/D/a").c_str(), 0777);
  WriteFile(folder.Path("out/D/c"), "in use");
  const int reader = open(folder.Path("out/D/c").c_str(), O_RDONLY);
  ASSERT_EQ(flock(reader, LOCK_SH), 0);
  const auto result = RunCommand(
      {"extract", folder.Path("x.7z"), "D", "E", "-C", folder.Path("out"), "--overwrite=all"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "morvunp: D/a: failed: a folder stands in its place\n");
  EXPECT_EQ(Out("D/d"), "D/d");
  EXPECT_EQ(Out("E/a"), "E/a");
  EXPECT_EQ(Out("D/c"), "D/c");
  char kept[6] = {};
  EXPECT_EQ(read(reader, kept, sizeof kept), 6);
  EXPECT_EQ(std::string(kept, sizeof kept), "in use") << "its reader has what it opened";
  close(reader);
}

TEST_F(SevenZip, CommandTellsAWrongPassword) {
  Put("a", Numbers(3000));
  Put("b", Numbers(3001));
  Make("-pright -mx0 -ms=off");
  Make("-pright -mhe", "h.7z");
  const std::string password = folder.Path("wrong");
  WriteFile(password, "wrong\n");
  const auto extracted = RunCommand(
      {"extract", folder.Path("x.7z"), "-C", folder.Path("out"), "--password-file", password});
  EXPECT_EQ(extracted.exitCode, 1);
  EXPECT_THAT(extracted.errors,
              HasSubstr("a: wrong password or damaged; the archive does not tell which\n"));
  EXPECT_THAT(extracted.errors, HasSubstr("b: wrong password or damaged"));
  const auto listed = RunCommand({"list", folder.Path("h.7z"), "--password-file", password});
  EXPECT_EQ(listed.exitCode, 2);
  EXPECT_THAT(listed.errors, HasSubstr("wrong password or damaged"));
  EXPECT_THAT(RunCommand({"list", folder.Path("h.7z")}).errors, HasSubstr("no password was given"));
}

}  // namespace
