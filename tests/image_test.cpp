// What ISO 9660 and UDF images have in common: lists, loops, dates, and images
// that end early.
#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "support/bytes.h"
#include "support/imagetest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::Pattern;
using testsupport::TreeOf;
using testsupport::UdfBuilder;
using testsupport::UdfNode;

struct Date {
  int year = 2001, month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

void SetModified(IsoNode& node, const Date& date) {
  const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
  node.date = {byte(date.year - 1900), byte(date.month),  byte(date.day), byte(date.hour),
               byte(date.minute),      byte(date.second), byte(20)};  // the zone is ignored
}
void SetModified(UdfNode& node, const Date& date) {
  const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
  node.modified = testsupport::MakeUdfDate(static_cast<std::uint16_t>(date.year), byte(date.month),
                                           byte(date.day), byte(date.hour), byte(date.minute),
                                           byte(date.second));
}
void ClearModified(IsoNode& node) { node.date = {}; }
void ClearModified(UdfNode& node) { node.modified = {}; }

void LeadTo(IsoNode& node, const IsoBuilder& builder, const IsoNode& other) {
  node.location = builder.LocationOf(other);
}
void LeadTo(UdfNode& node, const UdfBuilder& builder, const UdfNode& other) {
  node.icbLocation = builder.EntryBlockOf(other);
}

template <class Builder>
class Image : public testsupport::ImageTest<Builder> {};

using Builders = testing::Types<IsoBuilder, UdfBuilder>;
TYPED_TEST_SUITE(Image, Builders);

TYPED_TEST(Image, ListsFoldersBeforeTheirContentsInRecordOrder) {
  auto& a = this->builder.Root().AddFolder("a");
  a.AddFolder("Long name of a folder").AddFile("c.tar.gz", "c");
  a.AddFile("d.txt", "dd").hidden = true;
  this->builder.Root().AddFolder("empty.old").hidden = true;
  this->builder.Root().AddFile("Top");
  ASSERT_TRUE(this->OpenImage());
  EXPECT_TRUE(this->unpacker.IsListComplete());
  const struct {
    const wchar_t* path;
    const wchar_t* titleAndExtension;
    /// Folder, hidden, in a folder.
    int flags;
  } expected[] = {{L"a", L"a|", 100},
                  {L"a\\Long name of a folder", L"Long name of a folder|", 101},
                  {L"a\\Long name of a folder\\c.tar.gz", L"c.tar|gz", 1},
                  {L"a\\d.txt", L"d|txt", 11},
                  {L"empty.old", L"empty|old", 110},
                  {L"Top", L"Top|", 0}};
  const auto records = this->Records();
  ASSERT_EQ(records.size(), std::size(expected));
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].strPath, expected[i].path);
    EXPECT_EQ(records[i].strTitle + L"|" + records[i].strExt, expected[i].titleAndExtension);
    EXPECT_EQ(records[i].bFolder * 100 + records[i].bHidden * 10 + records[i].bInFolder,
              expected[i].flags);
  }
}

TYPED_TEST(Image, ListsAFolderThatLeadsBackButNeverEntersItAgain) {
  auto& sub = this->builder.Root().AddFolder("sub");
  auto& loop = sub.AddFolder("loop");
  auto& twin = this->builder.Root().AddFolder("twin");
  sub.AddFile("x");
  this->builder.Build();
  LeadTo(loop, this->builder, this->builder.Root());
  LeadTo(twin, this->builder, sub);
  ASSERT_TRUE(this->OpenImage());
  EXPECT_THAT(this->Paths(), ElementsAre(L"sub", L"sub\\loop", L"sub\\x", L"twin"));
  EXPECT_FALSE(this->unpacker.IsListComplete());
}

TYPED_TEST(Image, SurvivesDeepNesting) {
  // That many levels would be a path that nothing can create.
  auto* node = &this->builder.Root();
  for (int i = 0; i < 3000; ++i) node = &node->AddFolder("d");
  ASSERT_TRUE(this->OpenImage());
  EXPECT_GT(this->Paths().size(), 1000U);
  EXPECT_FALSE(this->unpacker.IsListComplete());
}

TYPED_TEST(Image, TakesDatesForLocalTimeAndRefusesImpossibleOnes) {
  const testsupport::TimeZone zone("America/New_York");
  auto& file = this->builder.Root().AddFile("a");
  SetModified(file, {2001, 7, 3, 4, 5, 6});  // summer time
  ASSERT_TRUE(this->OpenImage());
  EXPECT_EQ(this->InfoOf(L"a").timeModified, 994147506);
  ClearModified(file);
  ASSERT_TRUE(this->OpenImage());
  EXPECT_NEAR(static_cast<double>(this->InfoOf(L"a").timeModified),
              static_cast<double>(time(nullptr)), 60);
  for (const Date& date :
       {Date{1969, 12, 31, 23, 59, 59}, Date{.month = 0}, Date{.month = 13}, Date{.day = 0},
        Date{.day = 32}, Date{.hour = 24}, Date{.minute = 60}, Date{.second = 60}}) {
    SetModified(file, date);
    EXPECT_EQ(this->ErrorOfOpening(), E_FAIL);
  }
}

TYPED_TEST(Image, GivesTheHiddenAttribute) {
  this->builder.Root().AddFile("hidden", "a").hidden = true;
  this->builder.Root().AddFile("empty").hidden = true;
  ASSERT_TRUE(this->OpenImage());
  EXPECT_TRUE(this->Unpack());
  for (const char* name : {"out/hidden", "out/empty"}) {
    char attribute[8] = {};
    getxattr(this->folder.Path(name).c_str(), "user.DOSATTRIB", attribute, sizeof attribute);
    EXPECT_STREQ(attribute, "0x2") << name;
  }
}

TYPED_TEST(Image, KeepsWhatAnImageThatEndsEarlyHolds) {
  auto& file = this->builder.Root().AddFile("file", Pattern(5000));
  std::string image = this->builder.Build();
  image.resize(this->builder.ContentOffsetOf(file) + 1000);
  ASSERT_TRUE(this->OpenBytes(image));
  EXPECT_TRUE(this->Unpack());
  EXPECT_EQ(this->Out("file"), Pattern(1000));
}

TYPED_TEST(Image, KeepsHostileNamesOffTheDisk) {
  testsupport::WriteFile(this->folder.Path("planted"), "untouched");
  for (const std::string& name :
       {std::string("..\\planted"), std::string("..\\..\\planted"), std::string("../planted"),
        std::string("a\\b"), std::string("/etc"), std::string("\0", 1), std::string()}) {
    this->builder.Root().AddFile(name, "evil");
    this->builder.Root().AddFolder(name).AddFile("inside", "evil");
  }
  this->builder.Root().AddFile("good", "good");
  // Only where a path begins is it a drive.
  this->builder.Root().AddFolder("sub").AddFile("A:B", "good");
  ASSERT_TRUE(this->OpenImage());
  EXPECT_TRUE(this->Unpack());
  EXPECT_FALSE(this->Unpack(L"..\\..\\planted"));
  EXPECT_THAT(this->Out(),
              ElementsAre(Pair("good", "good"), Pair("sub/", ""), Pair("sub/A:B", "good")));
  EXPECT_EQ(TreeOf(this->folder.Path()).size(), 6U) << "x, planted, out and what is in it";
}

TYPED_TEST(Image, UnpacksTheCurrentItemUnderAnotherName) {
  this->builder.Root().AddFile("TOP.TXT", "top");
  ASSERT_TRUE(this->OpenImage());
  ASSERT_TRUE(this->unpacker.LocateFile(L"top.txt"));
  EXPECT_TRUE(this->unpacker.UnpackCurrentFile(L"any\\where\\NEW.TXT", this->Target()));
  EXPECT_THAT(this->Out(), ElementsAre(Pair("NEW.TXT", "top")));
  for (const wchar_t* name : {L"", L".."}) {
    EXPECT_FALSE(this->unpacker.UnpackCurrentFile(name, this->Target()));
  }
  this->unpacker.FindFile();
  EXPECT_FALSE(this->unpacker.UnpackCurrentFile(L"X", this->Target())) << "no current item";
}

TYPED_TEST(Image, IsReadOnlyWhileItIsOpen) {
  this->builder.Root().AddFile("A");
  ASSERT_TRUE(this->OpenImage());
  const std::wstring path = this->folder.LibraryPath("x");
  EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  CIsoUnpacker second;
  EXPECT_TRUE(second.OpenArchive(path)) << "readers share";
  EXPECT_TRUE(this->unpacker.CloseArchive());
  EXPECT_TRUE(this->unpacker.LocateFile(L"A")) << "the list stays";
  EXPECT_FALSE(this->Unpack(L"A")) << "nothing is read when closed";
  this->builder.Root().children.clear();
  this->builder.Root().AddFile("B");
  ASSERT_TRUE(this->OpenImage());
  EXPECT_THAT(this->Paths(), ElementsAre(L"B"));
}

TYPED_TEST(Image, ClearsTheAnswersOnlyAfterASuccessfulOpen) {
  INIYESTOALL answers{1, 1, 1, 1};
  this->unpacker.SetIniYesToAll(answers);
  EXPECT_FALSE(this->OpenBytes("no image"));
  this->unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllHidden, 1);
  ASSERT_TRUE(this->OpenImage());
  this->unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal + answers.bYesToAllSystem + answers.bYesToAllReadOnly +
                answers.bYesToAllHidden,
            0);
}

}  // namespace
