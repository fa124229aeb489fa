// The terminal command as its users run it: a process, with and without a
// terminal.
#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/cabbuilder.h"
#include "support/command.h"
#include "support/isobuilder.h"
#include "support/tempfolder.h"

namespace {

using testing::HasSubstr;
using testsupport::Arguments;
using testsupport::Exists;
using testsupport::OnTerminal;
using testsupport::ReadFile;
using testsupport::Result;
using testsupport::RunCommand;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

using Tree = std::map<std::string, std::string>;

class TerminalTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteFile(folder_.Path("in/README.TXT"), "new readme");
    WriteFile(folder_.Path("in/DOCS/A.TXT"), "alpha");
    WriteFile(folder_.Path("in/DOCS/DEEP/B.TXT"), "beta");
    const std::string command =
        "genisoimage -quiet -o '" + Image() + "' '" + folder_.Path("in") + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
  }

  std::string Image() const { return folder_.Path("test.iso"); }
  std::string Out(const std::string& sub = "") const {
    return folder_.Path(sub.empty() ? "out" : "out/" + sub);
  }
  Arguments Extract(const Arguments& more = {}) const {
    Arguments arguments{"extract", Image(), "-C", Out()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  /// Both files exist already, with another content.
  void MakeExisting() const {
    WriteFile(Out("README.TXT"), "old readme");
    WriteFile(Out("DOCS/A.TXT"), "old alpha");
  }
  std::string WriteImage(testsupport::IsoBuilder& builder) const {
    WriteFile(folder_.Path("made.iso"), builder.Build());
    return folder_.Path("made.iso");
  }

  TempFolder folder_;
};

TEST_F(TerminalTest, ListsATable) {
  const Result result = RunCommand({"list", Image()});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, HasSubstr(" 10  --    README.TXT\n"));
  EXPECT_THAT(result.output, HasSubstr("  D-    DOCS/DEEP\n"));
  EXPECT_THAT(result.output, HasSubstr("\nFiles - 3, Folders - 2, Size - 19 bytes"));
}

TEST_F(TerminalTest, ListsJsonForProgramsWhateverTheNames) {
  testsupport::IsoBuilder builder;
  builder.Root().AddFolder("SUB").AddFile("Q\"\x01\x1b[2J\xc2\x9b\xf3\xa0\x80\xae.X;1", "12345");
  const Result result = RunCommand({"list", WriteImage(builder), "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const auto items = nlohmann::json::parse(result.output).at("items");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0].at("folder"), true);
  EXPECT_EQ(items[1].at("path"), "SUB\\Q\"\x01\x1b[2J\xc2\x9b\xf3\xa0\x80\xae.X");
  EXPECT_EQ(std::count_if(result.output.begin(), result.output.end(),
                          [](char c) { return c != '\n' && (c < ' ' || c > '~'); }),
            0)
      << "nothing that a terminal would obey";
  EXPECT_EQ(items[1].at("size"), 5);
  EXPECT_EQ(items[1].at("modified"), "2001-02-03T04:05:06Z");
  EXPECT_FALSE(items[1].contains("accessed"));
}

TEST_F(TerminalTest, ShowsControlCharactersOfNamesAsEscapes) {
  testsupport::IsoBuilder builder;
  builder.Root().AddFile("A\x1b[2J\x07\x7f\xc2\x9b\xe2\x80\xae\xc3\xa9;1", "x");
  const std::string image = WriteImage(builder);
  const Result listed = RunCommand({"list", image});
  EXPECT_THAT(listed.output, HasSubstr(" A\\x1b[2J\\x07\\x7f\\x9b\\u202e\xc3\xa9\n"));
  RunCommand({"extract", image, "-C", Out()});
  const Result kept = RunCommand({"extract", image, "-C", Out()});
  EXPECT_EQ(kept.errors.find('\x1b'), std::string::npos);
  EXPECT_THAT(kept.errors, HasSubstr("A\\x1b[2J"));
}

TEST_F(TerminalTest, TellsAboutItemsAndNamesUnknownOnes) {
  const Result result = RunCommand({"info", Image(), "docs/", "DOCS\\a.txt", "nothing"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output.find("DOCS: Files - 2, Folders - 1, Size - 9 bytes"), 0U);
  EXPECT_THAT(result.output, HasSubstr("\nDOCS/A.TXT: Modified - "));
  EXPECT_EQ(result.errors, "morvunp: nothing: not in the archive\n");
}

TEST_F(TerminalTest, ExtractsEverythingIntoANewFolder) {
  const Result result = RunCommand({"extract", Image(), "-C", Out("a/b")});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "3 files, 2 folders, 19 bytes unpacked to " + Out("a/b") + "\n");
  EXPECT_EQ(TreeOf(Out("a/b")), TreeOf(folder_.Path("in")));
}

TEST_F(TerminalTest, ExtractsSelectedItems) {
  EXPECT_EQ(RunCommand(Extract({"docs/deep", "readme.txt", "--relative", "-q"})).exitCode, 0);
  const Tree expected{{"DEEP/", ""}, {"DEEP/B.TXT", "beta"}, {"README.TXT", "new readme"}};
  EXPECT_EQ(TreeOf(Out()), expected);
}

TEST_F(TerminalTest, ListsAndExtractsCabinets) {
  testsupport::CabBuilder builder;
  builder.Add(testsupport::CabMethod::kMszip, {{"DOCS\\A.TXT", "alpha", 0x22},
                                               {"DOCS\\DEEP\\B.TXT", "beta"},
                                               {"../C", "refused"},
                                               {"UNDATED", "u", 0x20, 0, 0}});
  builder.Add(testsupport::CabMethod::kStored, {{"D", "damaged"}});
  std::string cabinet = builder.Build();
  WriteFile(folder_.Path("x.cab"), cabinet);
  const Result list = RunCommand({"list", folder_.Path("x.cab")});
  EXPECT_THAT(list.output, HasSubstr("2001-02-03 04:05:06             5  -H    DOCS/A.TXT\n"));
  EXPECT_THAT(list.output, HasSubstr("Files - 5, Folders - 2, Size - 24 bytes\n"));
  EXPECT_THAT(list.output, HasSubstr(std::string(19, ' ') + "             1  --    UNDATED\n"));
  const Result flat = RunCommand({"extract", folder_.Path("x.cab"), "DOCS", "--flat", "-C", Out()});
  EXPECT_EQ(flat.exitCode, 0) << flat.errors;
  const Tree expected{{"A.TXT", "alpha"}, {"B.TXT", "beta"}};
  EXPECT_EQ(TreeOf(Out()), expected);
  cabinet.back() ^= 1;
  WriteFile(folder_.Path("x.cab"), cabinet);
  const Result all = RunCommand({"extract", folder_.Path("x.cab"), "-C", folder_.Path("all")});
  EXPECT_EQ(all.exitCode, 1);
  EXPECT_THAT(all.errors, HasSubstr("C: refused: unsafe name"));
  EXPECT_THAT(all.errors, HasSubstr("D: failed: damaged in the archive"));
  EXPECT_EQ(ReadFile(folder_.Path("all/DOCS/DEEP/B.TXT")), "beta");
}

TEST_F(TerminalTest, TakesTheFileThatIsSpelledExactlySo) {
  testsupport::IsoBuilder builder;
  auto& sub = builder.Root().AddFolder("SUB");
  sub.AddFile("NAME;1", "upper");
  sub.AddFile("name;1", "lower");
  EXPECT_EQ(RunCommand({"extract", WriteImage(builder), "SUB/name", "-C", Out()}).exitCode, 0);
  const Tree expected{{"SUB/", ""}, {"SUB/name", "lower"}};
  EXPECT_EQ(TreeOf(Out()), expected);
}

TEST_F(TerminalTest, KeepsExistingFilesWithoutATerminal) {
  MakeExisting();
  const Result result = RunCommand(Extract());
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "morvunp: DOCS/A.TXT: kept the existing file (no terminal to ask; use "
            "--overwrite=all to replace)\n"
            "morvunp: README.TXT: kept the existing file (no terminal to ask; use "
            "--overwrite=all to replace)\n");
  EXPECT_EQ(ReadFile(Out("README.TXT")), "old readme");
  EXPECT_EQ(ReadFile(Out("DOCS/DEEP/B.TXT")), "beta");
}

TEST_F(TerminalTest, NamesWhatCouldNotBeWritten) {
  WriteFile(folder_.Path("elsewhere"), "precious");
  std::filesystem::create_directories(Out("README.TXT"));
  std::filesystem::create_directories(Out("DOCS"));
  std::filesystem::create_symlink(folder_.Path("elsewhere"), Out("DOCS/A.TXT"));
  const Result result = RunCommand(Extract({"--overwrite=all"}));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "morvunp: DOCS/A.TXT: failed: a symbolic link stands in its place\n"
            "morvunp: README.TXT: failed: a folder stands in its place\n");
  EXPECT_EQ(ReadFile(folder_.Path("elsewhere")), "precious");
}

TEST_F(TerminalTest, NamesFilesThatTheImageLacksAPartOf) {
  testsupport::IsoBuilder builder;
  builder.Root().AddFile("FIRST;1", "whole");
  const auto& last = builder.Root().AddFile("LAST;1", std::string(3000, 'x'));
  const std::string image = WriteImage(builder);
  std::filesystem::resize_file(image, builder.ContentOffsetOf(last) + 100);
  const Result result = RunCommand({"extract", image, "-C", Out(), "-q"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "morvunp: LAST: cut short: the archive ends before the file does\n"
            "morvunp: " +
                image + ": cut short: the file ends before the archive does\n");
  EXPECT_EQ(RunCommand({"list", image}).exitCode, 1);
}

TEST_F(TerminalTest, SaysWhenFoldersOfTheImageAreMissing) {
  testsupport::IsoBuilder builder;
  builder.Root().AddFolder("GONE").AddFile("A.TXT;1", "a");
  std::string image = builder.Build();
  image.resize(builder.LocationOf(*builder.Root().children[0]) * std::size_t{2048});
  WriteFile(folder_.Path("cut.iso"), image);
  for (const char* command : {"list", "info", "extract"}) {
    Arguments arguments{command, folder_.Path("cut.iso")};
    if (arguments[0] == "extract") arguments.insert(arguments.end(), {"-C", folder_.Path("cut")});
    const Result result = RunCommand(arguments);
    EXPECT_EQ(result.exitCode, 1) << command;
    EXPECT_THAT(result.errors, HasSubstr("cut short: the file ends"));
  }
}

TEST_F(TerminalTest, TellsWhyAnArchiveCannotBeOpened) {
  WriteFile(folder_.Path("empty"), "");
  WriteFile(folder_.Path("text"), "no archive");
  const auto reason = [&](const std::string& name) {
    const Result result = RunCommand({"list", folder_.Path(name)});
    EXPECT_EQ(result.exitCode, 2);
    const std::string path = folder_.Path(name);
    return result.errors.substr(result.errors.find(path) + path.size());
  };
  EXPECT_EQ(reason("missing"), ": no such file\n");
  EXPECT_EQ(reason("empty"), ": the file is empty\n");
  EXPECT_EQ(reason("text"), ": not an archive that morvunp knows, or damaged\n");
  EXPECT_EQ(reason("in"), ": it is a folder\n");
}

TEST_F(TerminalTest, RefusesAWrongCommandLine) {
  EXPECT_EQ(RunCommand({}).exitCode, 2);
  const Result unknown = RunCommand({"list", Image(), "--unknown\x1b[2J"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.errors, HasSubstr("--unknown\\x1b[2J\n"));
  EXPECT_EQ(RunCommand(Extract({"--overwrite=some"})).exitCode, 2);
  const Result result = RunCommand({"list", Image(), "--codepage", "NO-SUCH"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.errors, HasSubstr("NO-SUCH"));
  EXPECT_EQ(RunCommand({"--help"}).exitCode, 0);
}

TEST_F(TerminalTest, AsksBeforeItReplaces) {
  MakeExisting();
  OnTerminal command(Extract());
  ASSERT_TRUE(command.Await("'A.TXT'.")) << command.Shown();
  ASSERT_TRUE(command.Await("size: 9 bytes")) << command.Shown();
  ASSERT_TRUE(command.Await("with file")) << command.Shown();
  ASSERT_TRUE(command.Await("[c] Cancel")) << command.Shown();
  command.Type("what\ny\n");
  ASSERT_TRUE(command.Await("'README.TXT'.")) << command.Shown();
  command.Type("\n");
  EXPECT_EQ(command.Finish(), 1);
  EXPECT_THAT(command.Shown(), HasSubstr("README.TXT: kept the existing file\r\n"));
  EXPECT_EQ(ReadFile(Out("DOCS/A.TXT")), "alpha");
  EXPECT_EQ(ReadFile(Out("README.TXT")), "old readme");
}

TEST_F(TerminalTest, AsksOnceAfterYesToAll) {
  MakeExisting();
  OnTerminal command(Extract());
  ASSERT_TRUE(command.Await("[c] Cancel")) << command.Shown();
  command.Type("a\n");
  EXPECT_EQ(command.Finish(), 0) << command.Shown();
  EXPECT_EQ(TreeOf(Out()), TreeOf(folder_.Path("in")));
}

TEST_F(TerminalTest, StopsWhenTheQuestionIsCancelled) {
  for (const std::string answer : {"c\n", "\x1b\n", "\x04", "\x03", "SIGTERM"}) {
    const bool isTold = answer == "SIGTERM";
    MakeExisting();
    OnTerminal command(Extract());
    ASSERT_TRUE(command.Await("[c] Cancel: ")) << command.Shown();
    isTold ? command.Send(SIGTERM) : command.Type(answer);
    EXPECT_EQ(command.Finish(), isTold ? 143 : 130) << command.Shown();
    EXPECT_THAT(command.Shown(), HasSubstr("DOCS/A.TXT: kept"));
    EXPECT_THAT(command.Shown(), HasSubstr("README.TXT: not reached"));
    EXPECT_EQ(ReadFile(Out("DOCS/A.TXT")), "old alpha");
  }
}

TEST_F(TerminalTest, LeavesNoPartialFileWhenItIsStopped) {
  // A sparse image whose file takes long enough to write.
  constexpr std::uint32_t kLength = 0x80000000;
  testsupport::IsoBuilder builder;
  builder.Root().AddFile("BIG.BIN;1", "x").dataLength = kLength;
  builder.Root().AddFile("Z.TXT;1", "last");
  const std::string image = WriteImage(builder);
  std::filesystem::resize_file(image, std::uintmax_t{kLength} + 0x100000);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    OnTerminal command({"extract", image, "-C", Out()});
    ASSERT_TRUE(command.Await("BIG.BIN")) << command.Shown();
    if (signal == SIGINT) {
      command.Type("\x03");
      ASSERT_TRUE(command.Await("Interrupt the unpack?")) << command.Shown();
      ASSERT_TRUE(command.Await(": ")) << command.Shown();
      command.Type("y\n");
    } else {
      command.Send(signal);
      command.Send(signal);
    }
    EXPECT_EQ(command.Finish(), 128 + signal) << command.Shown();
    EXPECT_THAT(command.Shown(), HasSubstr("BIG.BIN: interrupted"));
    EXPECT_THAT(command.Shown(), HasSubstr("Z.TXT: not reached"));
    EXPECT_FALSE(Exists(Out("BIG.BIN")));
  }
}

}  // namespace
