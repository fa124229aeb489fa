// What can be asked of cabinets beyond the contract: whole sets, going on behind
// damage, names in UTF-8.
#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

#include "support/bytes.h"
#include "support/cabbuilder.h"
#include "support/unpacktest.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemResult;
using morvunp::Route;
using morvunp::RoutedItem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::CabBuilder;
using testsupport::CabFile;
using testsupport::CabMethod;
using testsupport::Pattern;
using testsupport::WriteFile;

class CabOptions : public testsupport::UnpackTest<CCabUnpacker> {
 protected:
  /// Opens a set with files of 30,000 bytes, `count` of them, in cabinets of
  /// 100,000 packed bytes; the files of some of which are left out.
  void MakeSet(int count, const std::vector<std::size_t>& leftOut = {}) {
    std::vector<CabFile> files;
    for (int i = 0; i < count; ++i) {
      files.push_back({"F" + std::to_string(100 + i), Pattern(30'000) + std::to_string(i)});
      expected["F" + std::to_string(100 + i)] = files.back().data;
    }
    for (int i = 1; i <= 1 + count * 30'003 / 100'000; ++i) {
      names.push_back("set" + std::to_string(i) + ".cab");
    }
    CabBuilder builder;
    builder.Add(CabMethod::kStored, files);
    set = builder.BuildSet(100'000, names);
    for (std::size_t i = 0; i < set.size(); ++i) {
      if (std::find(leftOut.begin(), leftOut.end(), i) == leftOut.end()) Place(i);
    }
    Set({});
    Listen();
  }
  void Place(std::size_t i) { WriteFile(folder.Path(names[i]), set[i]); }
  std::size_t CountOf(ItemResult result) const {
    return static_cast<std::size_t>(std::count_if(
        told.begin(), told.end(), [&](const Told& report) { return report.result == result; }));
  }

  std::size_t CountOf(ItemReason reason) const {
    return static_cast<std::size_t>(std::count_if(
        told.begin(), told.end(), [&](const Told& report) { return report.reason == reason; }));
  }

  std::vector<std::string> names;
  std::vector<std::string> set;
  std::map<std::string, std::string> expected;
};

TEST_F(CabOptions, WalksAndUnpacksAWholeSet) {
  MakeSet(20);
  ASSERT_EQ(set.size(), 7U);
  ASSERT_TRUE(Open("set1.cab") && unpacker.FindFile());
  EXPECT_LT(Records().size(), 6U) << "one cabinet, where nothing is asked";
  ASSERT_TRUE(unpacker.SetOptions({.wholeSet = true}));
  ASSERT_TRUE(Open("set1.cab") && unpacker.FindFile());
  const auto walk = Positions();
  EXPECT_EQ(walk.size(), 20U);
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out() == expected);
  ASSERT_EQ(told.size(), 20U);
  for (const Told& report : told) EXPECT_EQ(walk.at(report.position), report.path);
  EXPECT_TRUE(Unpack(L"F119")) << "in the last cabinet";
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(), L"Files - 20, Folders - 0, Size - 600 030 bytes");
}

TEST_F(CabOptions, TellsWhatBeginsBeforeTheCabinetThatWasOpened) {
  MakeSet(20);
  ASSERT_TRUE(unpacker.SetOptions({.wholeSet = true}));
  ASSERT_TRUE(Open("set3.cab") && unpacker.FindFile());
  EXPECT_TRUE(Unpack());
  EXPECT_GE(CountOf(ItemReason::kBeginsEarlier), 1U);
  EXPECT_EQ(CountOf(ItemResult::kFailed), CountOf(ItemReason::kBeginsEarlier));
  EXPECT_EQ(CountOf(ItemResult::kWritten), told.size() - CountOf(ItemResult::kFailed));
  EXPECT_EQ(told.back().path, L"F119");
  for (const auto& [name, data] : Out()) EXPECT_TRUE(expected.at(name) == data) << name;
}

TEST_F(CabOptions, NamesTheCabinetThatIsMissing) {
  MakeSet(20, {3});
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true, .wholeSet = true}));
  ASSERT_TRUE(Open("set1.cab"));
  EXPECT_FALSE(unpacker.FindFile());
  EXPECT_FALSE(unpacker.IsListComplete());
  Unpack();
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kMissingVolume, L"set4.cab")));
  EXPECT_GE(CountOf(ItemReason::kMissingVolume), 1U) << "what runs into it";
  EXPECT_EQ(CountOf(ItemResult::kFailed), CountOf(ItemReason::kMissingVolume));
  EXPECT_EQ(CountOf(ItemResult::kWritten), told.size() - CountOf(ItemResult::kFailed));
  EXPECT_GE(told.size(), 9U);
}

TEST_F(CabOptions, AsksOnceWhereACabinetIs) {
  MakeSet(12, {1, 2});
  WriteFile(folder.Path("elsewhere/second"), set[1]);
  std::vector<std::wstring> asked;
  ASSERT_TRUE(unpacker.SetOptions(
      {.wholeSet = true,
       .onMissingVolume = [&](const std::wstring& name) -> std::optional<std::wstring> {
         asked.push_back(name);
         if (name == L"set2.cab") return folder.LibraryPath("elsewhere/second");
         return std::nullopt;
       }}));
  ASSERT_TRUE(Open("set1.cab"));
  EXPECT_FALSE(unpacker.FindFile());
  EXPECT_FALSE(Unpack());
  EXPECT_THAT(asked, ElementsAre(L"set2.cab", L"set3.cab"));
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kMissingVolume, L"set3.cab")));
  EXPECT_GE(CountOf(ItemResult::kWritten), 5U);
  Place(2);
  ASSERT_TRUE(Open("set1.cab"));
  EXPECT_TRUE(unpacker.FindFile());
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out() == expected);
}

TEST_F(CabOptions, HoldsSetsOfManyItems) {
  constexpr std::size_t kItems = 70'000;
  CabBuilder builder;
  std::vector<CabFile> files;
  for (std::size_t i = 0; i < kItems; ++i) files.push_back({std::to_string(i), "x"});
  builder.Add(CabMethod::kStored, std::move(files));
  builder.blockSize = 1000;
  const auto cabinets = builder.BuildSet(40'500, {"1.cab", "2.cab"});
  ASSERT_EQ(cabinets.size(), 2U);
  WriteFile(folder.Path("1.cab"), cabinets[0]);
  WriteFile(folder.Path("2.cab"), cabinets[1]);
  ASSERT_TRUE(unpacker.SetOptions({.wholeSet = true}));
  ASSERT_TRUE(Open("1.cab") && unpacker.FindFile());
  EXPECT_EQ(Positions().size(), kItems);
  Listen();
  Set({});
  EXPECT_TRUE(unpacker.UnpackItems(Target(), [&](const RoutedItem& item) {
    return item.position == kItems - 1 ? Route::To({Target(), L"last"}) : Route::PassOver();
  }));
  EXPECT_THAT(ends, ElementsAre(Pair(ItemReason::kNone, L"")));
  EXPECT_THAT(Names(), ElementsAre("last"));
}

TEST_F(CabOptions, GoesOnBehindADamagedFolder) {
  CabBuilder builder;
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    std::vector<CabFile> files;
    for (const char* number : {"1", "2", "3", "4"}) {
      files.push_back({std::string(name) + number, Pattern(40'000) + name + number});
      expected[files.back().name] = files.back().data;
    }
    builder.Add(CabMethod::kMszip, files);
  }
  std::string cabinet = builder.Build();
  // In the third block of the first folder: its first file lies before.
  const std::size_t data = cabinet.find("CK");
  std::size_t third = cabinet.find("CK", cabinet.find("CK", data + 2) + 2);
  cabinet[third + 100] = static_cast<char>(cabinet[third + 100] ^ 1);
  ASSERT_TRUE(OpenBytes(cabinet) && unpacker.FindFile());
  Set({});
  Listen();
  EXPECT_FALSE(Unpack());
  EXPECT_LT(CountOf(ItemResult::kWritten), 4U);
  EXPECT_EQ(told.back().result, ItemResult::kNotReached);

  ASSERT_TRUE(unpacker.SetOptions({.goOn = true, .brokenFiles = morvunp::BrokenFiles::kRemove}));
  Listen();
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(told.size(), 20U);
  EXPECT_GE(CountOf(ItemResult::kWritten), 17U);
  EXPECT_EQ(CountOf(ItemResult::kWritten) + CountOf(ItemResult::kFailed), 20U);
  for (const Told& report : told) {
    if (report.result == ItemResult::kFailed) {
      EXPECT_EQ(report.reason, ItemReason::kDamaged);
      continue;
    }
    const std::string name(report.path.begin(), report.path.end());
    EXPECT_TRUE(Out(name) == expected.at(name)) << name;
  }
  EXPECT_THAT(ends.back(), Pair(ItemReason::kNone, L""));
}

/// A message that comes while the cabinet is read may throw.
TEST_F(CabOptions, EndsWhereTheHostThrows) {
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"a", Pattern(3'000'000)}, {"b", "b"}});
  ASSERT_TRUE(OpenBytes(builder.Build()) && unpacker.FindFile());
  Set({});
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true, .pumpAlways = true}));
  Listen();
  host.onProgress = [this] {
    if (!host.progressMessages.back().name.empty()) return;
    host.onProgress = nullptr;
    throw std::runtime_error("host");
  };
  EXPECT_THROW(Unpack(), std::runtime_error);
  EXPECT_THAT(Names(), IsEmpty());
  EXPECT_LE(told.size(), 1U) << "nothing behind it is begun";
}

TEST_F(CabOptions, TakesNoListOfAnotherCabinet) {
  ASSERT_TRUE(OpenBytes(CabBuilder().Add(CabMethod::kStored, {{"1", "1"}, {"2", "2"}}).Build()));
  ASSERT_TRUE(unpacker.FindFile());
  ASSERT_TRUE(OpenBytes(CabBuilder().Add(CabMethod::kStored, {{"only", "x"}}).Build()));
  std::vector<std::wstring> asked;
  EXPECT_TRUE(unpacker.UnpackItems({}, [&](const RoutedItem& item) {
    asked.emplace_back(item.path);
    return Route::PassOver();
  }));
  EXPECT_THAT(asked, ElementsAre(L"only"));
}

TEST_F(CabOptions, GoesOnWhereAFileCannotBeCreated) {
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true, .codePage = "CP1252"}));
  ASSERT_TRUE(OpenBytes(CabBuilder()
                            .Add(CabMethod::kStored,
                                 {{"a", "1"}, {std::string(200, '\xE9'), "2"}, {"b", "3"}})
                            .Build()) &&
              unpacker.FindFile());
  Set({});
  Listen();
  Unpack();
  EXPECT_THAT(Names(), ElementsAre("a", "b"));
  ASSERT_EQ(told.size(), 3U);
  EXPECT_EQ(told[1].reason, ItemReason::kNameTooLong);
}

TEST_F(CabOptions, TellsEachFileBehindTheDamage) {
  CabBuilder builder;
  std::vector<CabFile> files;
  for (int i = 0; i < 3000; ++i) files.push_back({std::to_string(i), std::string(300, 'x')});
  builder.Add(CabMethod::kMszip, files);
  std::string cabinet = builder.Build();
  std::size_t block = 0;
  for (int i = 0; i < 14; ++i) block = cabinet.find("CK", block + 2);
  cabinet[block + 5] ^= 0x55;
  ASSERT_TRUE(OpenBytes(cabinet) && unpacker.FindFile());
  Set({});
  ASSERT_TRUE(unpacker.SetOptions({.goOn = true}));
  Listen();
  Unpack();
  EXPECT_EQ(told.size(), 3000U);
  EXPECT_GT(CountOf(ItemResult::kWritten), 1300U);
  EXPECT_GT(CountOf(ItemReason::kDamaged), 1300U);
  EXPECT_EQ(CountOf(ItemResult::kWritten) + CountOf(ItemReason::kDamaged), 3000U);
}

TEST_F(CabOptions, ReadsNamesThatAreMarkedAsUtf8) {
  const CabFile marked{"\xC3\xA9", "1", 0xA0};
  const CabFile plain{"e", "2", 0x20};
  ASSERT_TRUE(unpacker.SetOptions({.codePage = "CP1252"}));
  const std::string cabinet = CabBuilder().Add(CabMethod::kStored, {marked, plain}).Build();
  ASSERT_TRUE(OpenBytes(cabinet) && unpacker.FindFile());
  EXPECT_EQ(Paths().front(), L"\u00C3\u00A9");
  ASSERT_TRUE(unpacker.SetOptions({.codePage = "CP1252", .utf8Names = true}));
  ASSERT_TRUE(Open() && unpacker.FindFile());
  EXPECT_EQ(Paths().front(), L"\u00E9");
  Set({});
  EXPECT_TRUE(Unpack(L"\u00E9"));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Names(), ElementsAre("e", "\xC3\xA9"));
}

}  // namespace
