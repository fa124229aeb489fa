// May a file be written where one exists? Each kind of existing file, each
// answer, and what the dialog shows.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "support/attributes.h"
#include "support/imagetest.h"

namespace {

using testsupport::DialogAnswer;
using testsupport::kCancel;
using testsupport::kNo;
using testsupport::kYesToAll;

class Replace : public testsupport::ImageTest<testsupport::IsoBuilder> {
 protected:
  void SetUp() override {
    Set({.bConfirmReplace = 1});
    for (const char* name : {"A.TXT", "B.TXT", "C.TXT"}) builder.Root().AddFile(name, "new");
    ASSERT_TRUE(OpenImage());
  }

  /// An existing file, with attributes of the host's system.
  void Plant(const std::string& name, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    testsupport::WriteFile(folder.Path("out/" + name), "old content");
    ASSERT_TRUE(
        testsupport::SetAttributes(Target(), std::wstring(name.begin(), name.end()), attributes));
  }
  void PlantAll() {
    for (const char* name : {"A.TXT", "B.TXT", "C.TXT"}) Plant(name);
  }

  std::string Contents() const {
    std::string contents;
    for (const auto& [name, content] : Out()) contents += content + ".";
    return contents;
  }
};

TEST_F(Replace, ShowsBothFiles) {
  Plant("A.TXT");
  testsupport::WriteFile(folder.Path("out/A.TXT"), std::string(1234567, 'x'));
  const timespec times[] = {{0, UTIME_OMIT}, {994147506, 0}};
  utimensat(AT_FDCWD, folder.Path("out/A.TXT").c_str(), times, 0);
  host.dialogAnswers = {DialogAnswer::Press(kNo)};
  EXPECT_TRUE(Unpack()) << "the last file is new";
  ASSERT_EQ(host.dialogs.size(), 1U);
  const auto& shown = host.dialogs[0];
  EXPECT_EQ(shown.templateId, 1001U);
  EXPECT_EQ(shown.texts.at(1005), L"This folder already contains a file named");
  EXPECT_EQ(shown.texts.at(1006), L"'A.TXT'.");
  EXPECT_EQ(shown.texts.at(1007), L"size: 1 234 567 bytes");
  EXPECT_EQ(shown.texts.at(1009), L"size: 3 bytes");
  wchar_t expected[128];
  const time_t time = 994147506;
  wcsftime(expected, 128, L"modified: %x, %X", localtime(&time));
  EXPECT_EQ(shown.texts.at(1008), expected);
  EXPECT_NE(shown.texts.at(1010), shown.texts.at(1008));
  EXPECT_THAT(host.iconRequests,
              testing::ElementsAre(testsupport::IconRequest{folder.LibraryPath("out/A.TXT"), false},
                                   testsupport::IconRequest{L".TXT", true}));
}

TEST_F(Replace, CancelAndEscapeEndTheRun) {
  PlantAll();
  for (const DialogAnswer& answer : {DialogAnswer::Press(kCancel), DialogAnswer::Escape()}) {
    host.dialogAnswers = {DialogAnswer::Press(kNo), answer};
    EXPECT_FALSE(Unpack());
    EXPECT_EQ(Contents(), "old content.old content.old content.");
  }
}

TEST_F(Replace, YesToAllHoldsForOneKindUntilTheNextOpen) {
  Plant("A.TXT");
  Plant("B.TXT");
  Plant("C.TXT", FILE_ATTRIBUTE_HIDDEN);
  host.dialogAnswers = {DialogAnswer::Press(kYesToAll), DialogAnswer::Press(kNo)};
  EXPECT_FALSE(Unpack());
  EXPECT_EQ(Contents(), "new.new.old content.");
  INIYESTOALL answers;
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal, 1);
  EXPECT_EQ(answers.bYesToAllHidden, 0);
  host.dialogAnswers = {DialogAnswer::Press(kNo)};
  Unpack();
  ASSERT_TRUE(Open());
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal, 0);
}

struct KindCase {
  DWORD attributes;
  const wchar_t* message;
  BYTE INIYESTOALL::*answer;
};

TEST_F(Replace, TellsTheKindsOfFilesApart) {
  const KindCase cases[] = {
      {FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY,
       L"This folder already contains a system file named", &INIYESTOALL::bYesToAllSystem},
      {FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN,
       L"This folder already contains a read-only file named", &INIYESTOALL::bYesToAllReadOnly},
      {FILE_ATTRIBUTE_HIDDEN, L"This folder already contains a hidden file named",
       &INIYESTOALL::bYesToAllHidden}};
  for (const KindCase& kind : cases) {
    Plant("A.TXT", kind.attributes);
    host.dialogs.clear();
    host.dialogAnswers = {DialogAnswer::Press(kYesToAll)};
    ASSERT_TRUE(Unpack(L"A.TXT"));
    EXPECT_EQ(host.dialogs.at(0).texts.at(1005), kind.message);
    INIYESTOALL answers;
    unpacker.GetIniYesToAll(answers);
    EXPECT_EQ(answers.*kind.answer, 1);
    EXPECT_EQ(Out("A.TXT"), "new");
    EXPECT_EQ(GetFileAttributesW(folder.LibraryPath("out/A.TXT").c_str()), FILE_ATTRIBUTE_NORMAL);
  }
}

TEST_F(Replace, LeavesOtherNamesOfAFileAsTheyAreAndTakesNoRightsOver) {
  Plant("A.TXT", FILE_ATTRIBUTE_READONLY);
  const std::string other = folder.Path("other");
  ASSERT_EQ(link(folder.Path("out/A.TXT").c_str(), other.c_str()), 0);
  Plant("B.TXT");
  chmod(folder.Path("out/B.TXT").c_str(), 06750);
  Set({});
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Contents(), "new.new.new.");
  EXPECT_EQ(testsupport::ReadFile(other), "old content");
  EXPECT_EQ(std::filesystem::status(other).permissions(), std::filesystem::perms{0444});
  EXPECT_EQ(StatusOf("A.TXT").st_mode & 07777, 0444U) << "a new file with its permissions";
  EXPECT_EQ(StatusOf("B.TXT").st_mode & 07777, 0750U);
}

TEST_F(Replace, DoesNotAskWhenTheSettingIsOff) {
  PlantAll();
  Set({});
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Contents(), "new.new.new.");
  Plant("A.TXT", FILE_ATTRIBUTE_READONLY);
  CIsoUnpacker fresh;
  ASSERT_TRUE(fresh.OpenArchive(folder.LibraryPath("x")));
  EXPECT_TRUE(fresh.UnpackArchive(Target())) << "nor does a new unpacker for images";
  EXPECT_EQ(Contents(), "new.new.new.");
}

TEST_F(Replace, ADialogThatCannotRunCountsAsYesAndFilesAreCutToTheirNewLength) {
  testsupport::WriteFile(folder.Path("out/A.TXT"), std::string(100000, 'x'));
  host.dialogAnswers = {DialogAnswer::CannotRun()};
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out("A.TXT"), "new");
}

}  // namespace
