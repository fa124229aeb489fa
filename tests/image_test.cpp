// What ISO 9660 and UDF images have in common: lists, loops, dates, and images
// that end early.
#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "support/bytes.h"
#include "support/imagetest.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testsupport::IsoBuilder;
using testsupport::Little;
using testsupport::Pattern;
using testsupport::Put;
using testsupport::TreeOf;
using testsupport::UdfBuilder;

struct Date {
  int year = 2001, month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

std::string YearOf(const IsoBuilder&, int year) { return Little(unsigned(year - 1900), 1); }
std::string YearOf(const UdfBuilder&, int year) { return Little(unsigned(year), 2); }

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
  std::vector<std::wstring> items;
  for (const auto& record : this->Records()) {
    items.push_back(record.strPath + L" = " + record.strTitle + L"|" + record.strExt +
                    (record.bFolder != 0 ? L", folder" : L"") +
                    (record.bHidden != 0 ? L", hidden" : L"") +
                    (record.bInFolder != 0 ? L", inside" : L""));
  }
  EXPECT_THAT(items,
              ElementsAre(L"a = a|, folder",
                          L"a\\Long name of a folder = Long name of a folder|, folder, inside",
                          L"a\\Long name of a folder\\c.tar.gz = c.tar|gz, inside",
                          L"a\\d.txt = d|txt, hidden, inside",
                          L"empty.old = empty|old, folder, hidden", L"Top = Top|"));
  EXPECT_TRUE(this->Unpack());
  char attribute[8] = {};
  getxattr(this->folder.Path("out/a/d.txt").c_str(), "user.DOSATTRIB", attribute, sizeof attribute);
  EXPECT_STREQ(attribute, "0x2");
}

TYPED_TEST(Image, ListsAFolderThatLeadsBackButNeverEntersItAgain) {
  auto& sub = this->builder.Root().AddFolder("sub");
  auto& loop = sub.AddFolder("loop");
  auto& twin = this->builder.Root().AddFolder("twin");
  sub.AddFile("x");
  std::string image = this->builder.Build();
  const auto lead = [&](const auto& from, const auto& to) {
    Put(image, this->builder.LinkOffsetOf(from), Little(this->builder.LocationOf(to), 4));
  };
  lead(loop, this->builder.Root());
  lead(twin, sub);
  ASSERT_TRUE(this->OpenBytes(image));
  EXPECT_THAT(this->Paths(), ElementsAre(L"sub", L"sub\\loop", L"sub\\x", L"twin"));
  EXPECT_FALSE(this->unpacker.IsListComplete());
}

TYPED_TEST(Image, BoundsDepthAndLengthOfPaths) {
  const struct {
    int levels;
    std::size_t nameLength;
    /// What is listed of them.
    std::size_t least;
    std::size_t most;
  } cases[] = {{3000, 1, 1000, 1100}, {50, 200, 20, 22}};
  for (const auto& [levels, nameLength, least, most] : cases) {
    this->builder.Root().children.clear();
    auto* node = &this->builder.Root();
    for (int i = 0; i < levels; ++i) node = &node->AddFolder(std::string(nameLength, 'd'));
    ASSERT_TRUE(this->OpenImage());
    EXPECT_GE(this->Paths().size(), least);
    EXPECT_LE(this->Paths().size(), most);
    EXPECT_FALSE(this->unpacker.IsListComplete());
  }
}

TYPED_TEST(Image, TakesDatesForLocalTimeAndRefusesImpossibleOnes) {
  const testsupport::TimeZone zone("America/New_York");
  const auto& file = this->builder.Root().AddFile("a");
  std::string image = this->builder.Build();
  const std::size_t offset = this->builder.DateOffsetOf(file);
  const auto set = [&](const Date& date) {
    std::string bytes = YearOf(this->builder, date.year);
    for (const int part : {date.month, date.day, date.hour, date.minute, date.second}) {
      bytes += static_cast<char>(part);
    }
    Put(image, offset, bytes);
  };
  set({2001, 7, 3, 4, 5, 6});  // summer time
  ASSERT_TRUE(this->OpenBytes(image));
  EXPECT_EQ(this->InfoOf(L"a").timeModified, 994147506);
  for (const Date& date :
       {Date{1969, 12, 31, 23, 59, 59}, Date{.month = 0}, Date{.month = 13}, Date{.day = 0},
        Date{.day = 32}, Date{.hour = 24}, Date{.minute = 60}, Date{.second = 60}}) {
    set(date);
    EXPECT_THROW(this->OpenBytes(image), CAtlException);
    EXPECT_FALSE(this->unpacker.IsListComplete());
  }
  {
    // The epoch and the second before it, as reproducible builds record them.
    const testsupport::TimeZone berlin("Europe/Berlin");
    set({1970, 1, 1, 0, 0, 0});
    ASSERT_TRUE(this->OpenBytes(image));
    EXPECT_EQ(this->InfoOf(L"a").timeModified, -3600);
    set({1970, 1, 1, 0, 59, 59});
    ASSERT_TRUE(this->OpenBytes(image));
    EXPECT_EQ(this->InfoOf(L"a").timeModified, -1);
    EXPECT_TRUE(this->Unpack());
    EXPECT_EQ(this->StatusOf("a").st_mtime, -1);
  }
  Put(image, offset, std::string(7, '\0'));
  ASSERT_TRUE(this->OpenBytes(image));
  EXPECT_NEAR(static_cast<double>(this->InfoOf(L"a").timeModified),
              static_cast<double>(time(nullptr)), 60);
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
  // Only where a path begins is it a drive.
  this->builder.Root().AddFolder("sub").AddFile("A:B", "good");
  ASSERT_TRUE(this->OpenImage());
  EXPECT_TRUE(this->Unpack());
  EXPECT_FALSE(this->Unpack(L"..\\..\\planted"));
  EXPECT_THAT(this->Out(), ElementsAre(Pair("sub/", ""), Pair("sub/A:B", "good")));
  EXPECT_EQ(TreeOf(this->folder.Path()).size(), 5U) << "x, planted, out and what is in it";
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
  INIYESTOALL answers{.bYesToAllHidden = 1};
  this->builder.Root().AddFile("A");
  ASSERT_TRUE(this->OpenImage());
  const std::wstring path = this->folder.LibraryPath("x");
  EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  CIsoUnpacker second;
  EXPECT_TRUE(second.OpenArchive(path)) << "readers share";
  EXPECT_TRUE(this->unpacker.CloseArchive());
  EXPECT_TRUE(this->unpacker.LocateFile(L"A")) << "the list stays";
  EXPECT_FALSE(this->Unpack(L"A")) << "nothing is read when closed";
  this->unpacker.SetIniYesToAll(answers);
  EXPECT_FALSE(this->Open("none"));
  this->unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllHidden, 1) << "they go with a successful open only";
}

}  // namespace
