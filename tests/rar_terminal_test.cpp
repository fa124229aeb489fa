// RAR archives through the terminal command: passwords, volumes, and what it
// says of items that did not come out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/command.h"
#include "support/rarbuilder.h"
#include "support/tempfolder.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testsupport::Exists;
using testsupport::OnTerminal;
using testsupport::ReadFile;
using testsupport::Result;
using testsupport::RunCommand;
using testsupport::WriteFile;

class RarTerminal : public testing::Test {
 protected:
  static std::string Fixture(const std::string& name) {
    return std::string(MORVUNP_FIXTURES "/rar/") + name;
  }
  std::string Out(const std::string& name = {}) const {
    return folder.Path(name.empty() ? "out" : "out/" + name);
  }
  testsupport::TempFolder folder;
};

TEST_F(RarTerminal, ListsASplitFileOnceAndUnpacksIt) {
  const Result listed = RunCommand({"list", Fixture("set.part1.rar"), "--json"});
  const auto items = nlohmann::json::parse(listed.output).at("items");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0].at("path"), "BIG.TXT");
  EXPECT_EQ(items[0].at("packed"), 2692) << "of all parts together";
  EXPECT_EQ(items[0].at("modified"), "2024-02-03T04:05:06Z");
  const Result unpacked = RunCommand({"extract", Fixture("set.part1.rar"), "-C", Out()});
  EXPECT_EQ(unpacked.output, "2 files, 0 folders, 2 695 bytes unpacked to " + Out() + "\n");
}

TEST_F(RarTerminal, TakesPasswordsFromAFileOrStandardInput) {
  for (const char* name : {"encrypted-headers.rar", "solid-encrypted-files.rar"}) {
    const Result unpacked =
        RunCommand({"extract", Fixture(name), "-C", Out(name), "--password-file", "-"}, "secret\n");
    EXPECT_EQ(unpacked.exitCode, 0) << unpacked.errors;
    EXPECT_EQ(ReadFile(Out(name) + "/DOCS/A.TXT"), "alpha\n");
  }
  WriteFile(folder.Path("password"), "secret\r\nmore\n");
  for (const auto& [file, exitCode] : {std::pair("password", 0), {"nowhere", 2}}) {
    const Result listed = RunCommand(
        {"list", Fixture("encrypted-headers.rar"), "--password-file", folder.Path(file)});
    EXPECT_EQ(listed.exitCode, exitCode) << listed.errors;
  }
}

TEST_F(RarTerminal, SaysWhatWentWrong) {
  for (const char* part : {"set.part1.rar", "set.part2.rar"}) {
    WriteFile(folder.Path(part), ReadFile(Fixture(part)));
  }
  WriteFile(folder.Path("bad"),
            testsupport::BuildRar4({.path = "BAD", .data = "x", .hasWrongSum = true}));
  WriteFile(folder.Path("link"), testsupport::RarBuilder()
                                     .Add({.path = "L", .redirection = 1, .redirectsTo = "../up"})
                                     .Build());
  const std::string headers = Fixture("encrypted-headers.rar");
  const std::string files = Fixture("encrypted-files.rar");
  const struct {
    std::string archive;
    std::string password;
    int exitCode;
    std::string errors;
  } cases[] = {
      {headers, "wrong", 2, ".rar: wrong password\n"},
      {headers, "", 2, "no password was given\n"},
      {files, "wrong", 1, "DOCS/A.TXT: wrong password\n"},
      {files, "wrong", 1, "TOP.TXT: wrong password\n"},
      {files, "", 1, "DOCS/A.TXT: it is encrypted and no password was given\n"},
      {files, "", 1, "TOP.TXT: not reached\n"},
      {folder.Path("bad"), "", 1, "BAD: damaged\n"},
      {folder.Path("link"), "", 1, "L: refused: a link that leads out of the folder\n"},
      {folder.Path("set.part1.rar"), "", 1,
       "BIG.TXT: the volume " + folder.Path("set.part3.rar") + " is missing\n"},
      {folder.Path("set.part1.rar"), "", 1, "cut short: a volume of the set is missing\n"},
  };
  for (const auto& [archive, password, exitCode, errors] : cases) {
    testsupport::Arguments arguments{"extract", archive, "-C", Out()};
    if (!password.empty()) arguments.insert(arguments.end(), {"--password-file", "-"});
    const Result result = RunCommand(arguments, password);
    EXPECT_EQ(result.exitCode, exitCode) << archive;
    EXPECT_THAT(result.errors, HasSubstr(errors));
  }
}

TEST_F(RarTerminal, AsksForThePasswordUnseenAndAgainWhenItIsWrong) {
  OnTerminal command({"extract", Fixture("encrypted-headers.rar"), "-C", Out()});
  ASSERT_TRUE(command.Await("Password: "));
  command.Type("wrong\n");
  ASSERT_TRUE(command.Await("wrong password")) << command.Shown();
  ASSERT_TRUE(command.Await("Password: ")) << command.Shown();
  command.Type("oops\x15secrex\x7ft\n");
  EXPECT_EQ(command.Finish(), 0) << command.Shown();
  EXPECT_THAT(command.Shown(), HasSubstr("*****"));
  EXPECT_THAT(command.Shown(), Not(HasSubstr("secre")));
  EXPECT_EQ(ReadFile(Out("DOCS/A.TXT")), "alpha\n");
}

TEST_F(RarTerminal, EndsWhenThePromptIsCancelled) {
  for (const char* key : {"\x1b", "\x03", "\x04"}) {
    OnTerminal command({"extract", Fixture("encrypted-files.rar"), "-C", Out()});
    ASSERT_TRUE(command.Await("Password: "));
    command.Type(key);
    EXPECT_EQ(command.Finish(), 130) << command.Shown();
    EXPECT_THAT(command.Shown(), HasSubstr("no password was given"));
  }
  EXPECT_FALSE(Exists(Out("DOCS/A.TXT")));
}

}  // namespace
