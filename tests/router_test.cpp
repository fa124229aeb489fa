// One pass to any destination, in all formats.
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "support/bytes.h"
#include "support/cabbuilder.h"
#include "support/formats.h"
#include "support/unpacktest.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemReport;
using morvunp::ItemResult;
using morvunp::Route;
using morvunp::RoutedItem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::Items;
using testsupport::Pattern;

/// Keeps what it gets, as far as it wants more.
class Keeper : public morvunp::ItemSink {
 public:
  struct Kept {
    std::wstring path;
    std::string bytes;
    ItemResult result = ItemResult::kNotReached;
  };

  void Begin(const RoutedItem& item) override { kept.push_back({std::wstring(item.path), {}}); }
  bool Write(const void* bytes, std::size_t length) override {
    kept.back().bytes.append(static_cast<const char*>(bytes), length);
    return onWrite ? onWrite() : true;
  }
  bool End(const ItemReport& report) override {
    kept.back().result = report.result;
    EXPECT_EQ(report.bytesWritten, kept.back().bytes.size());
    return kept.size() < enough;
  }

  std::vector<Kept> kept;
  std::function<bool()> onWrite;
  std::size_t enough = static_cast<std::size_t>(-1);
};

template <class F>
class Router : public testsupport::UnpackTest<typename F::Unpacker> {
 protected:
  void Make(const Items& items) {
    F::kWrite(this->folder.Path("x"), items);
    ASSERT_TRUE(this->Open());
    ASSERT_TRUE(this->unpacker.FindFile());
    this->Set({});
    this->Listen();
  }
  void MakeTree() {
    Make({{"A.TXT", "a"}, {"B.TXT", Pattern(400'000)}, {"D/"}, {"D/C.TXT", "c"}, {"E.TXT", ""}});
  }
  bool Pass(const morvunp::ItemRouter& router) {
    return this->unpacker.UnpackItems(this->Target(), router);
  }
  morvunp::OutputPlace Place(const std::wstring& below, const std::wstring& name) const {
    return {this->Target() + below, name};
  }
};

TYPED_TEST_SUITE(Router, testsupport::Formats, testsupport::FormatNames);

TYPED_TEST(Router, SendsEachItemItsWay) {
  this->MakeTree();
  const std::map<ULONGLONG, std::wstring> walk = this->Positions();
  std::map<ULONGLONG, std::wstring> asked;
  Keeper keeper;
  EXPECT_TRUE(this->Pass([&](const RoutedItem& item) {
    EXPECT_TRUE(asked.insert({item.position, std::wstring(item.path)}).second) << "asked twice";
    EXPECT_EQ(item.isFolder, item.path == L"D");
    if (item.path == L"A.TXT") return Route::PassOver();
    if (item.path == L"B.TXT") return Route::To(this->Place(L"\\new\\deep", L"b"));
    if (item.isFolder) return Route::To(this->Place(L"\\folder", L""));
    EXPECT_EQ(item.size, item.path == L"E.TXT" ? 0U : 1U);
    return Route::Into(keeper);
  }));
  ASSERT_EQ(asked.size(), walk.size());
  for (auto& [position, path] : asked) {
    // A cabinet's list has the separator that makes a folder of an item.
    const bool isFolder = walk.at(position).ends_with(L'\\');
    EXPECT_EQ(path + (isFolder ? L"\\" : L""), walk.at(position));
  }
  EXPECT_THAT(this->Names(), ElementsAre("folder/", "new/", "new/deep/", "new/deep/b"));
  EXPECT_TRUE(this->Out("new/deep/b") == Pattern(400'000));
  ASSERT_EQ(keeper.kept.size(), 2U);
  std::map<std::wstring, std::string> bytes;
  for (const auto& kept : keeper.kept) {
    EXPECT_EQ(kept.result, ItemResult::kIntact);
    bytes[kept.path] = kept.bytes;
  }
  EXPECT_THAT(bytes, ElementsAre(Pair(L"D\\C.TXT", "c"), Pair(L"E.TXT", "")));
  EXPECT_EQ(this->told.size(), 4U);
  for (const auto& report : this->told) EXPECT_EQ(report.path, walk.at(report.position));
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kNone, L"")));
}

TYPED_TEST(Router, EndsWhereNoMoreIsWanted) {
  this->Make({{"A", "a"}, {"B", Pattern(900'000)}, {"C", "c"}});
  Keeper keeper;
  const auto all = [&](const RoutedItem&) { return Route::Into(keeper); };
  // By the router.
  EXPECT_TRUE(this->Pass([&](const RoutedItem& item) {
    return item.path == L"B" ? Route::End() : Route::Into(keeper);
  }));
  EXPECT_EQ(keeper.kept.size(), 1U);
  // Behind an item.
  keeper.kept.clear();
  keeper.enough = 2;
  EXPECT_TRUE(this->Pass(all));
  ASSERT_EQ(keeper.kept.size(), 2U);
  EXPECT_TRUE(keeper.kept[1].bytes == Pattern(900'000));
  // In the midst of one.
  keeper.kept.clear();
  keeper.onWrite = [&] { return keeper.kept.size() == 1; };
  EXPECT_TRUE(this->Pass(all));
  ASSERT_EQ(keeper.kept.size(), 2U);
  EXPECT_EQ(keeper.kept[1].result, ItemResult::kNotReached);
  EXPECT_EQ(this->told.size(), 5U) << "what is not wanted is not told";
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kNone, L""), Pair(ItemReason::kNone, L""),
                                      Pair(ItemReason::kNone, L"")));
}

TYPED_TEST(Router, TestsWithoutADisk) {
  this->MakeTree();
  Keeper keeper;
  EXPECT_TRUE(
      this->unpacker.UnpackItems({}, [&](const RoutedItem&) { return Route::Into(keeper); }));
  EXPECT_EQ(keeper.kept.size(), 5U);
  for (const auto& kept : keeper.kept) EXPECT_EQ(kept.result, ItemResult::kIntact);
  EXPECT_THAT(this->host.fileTreePaths, IsEmpty());
  EXPECT_THAT(this->Names(), IsEmpty());
}

TYPED_TEST(Router, WritesNowhereButBelowTheTarget) {
  this->Make({{"A", "a"}});
  const std::wstring out = this->Target();
  const std::vector<morvunp::OutputPlace> places{{out + L"\\..", L"a"},
                                                 {out, L"..\\a"},
                                                 {out, L"b\\a"},
                                                 {out, L""},
                                                 {out + L"x", L"a"},
                                                 {out.substr(0, out.size() - 4), L"a"},
                                                 {L"", L"a"},
                                                 {out + L"\\b\\\\c", L"a"},
                                                 {out, std::wstring(L"a\0b", 3)}};
  for (const auto& place : places) {
    EXPECT_TRUE(this->Pass([&](const RoutedItem&) { return Route::To(place); }));
    ASSERT_EQ(this->told.size(), 1U);
    EXPECT_EQ(this->told[0].reason, ItemReason::kUnsafeName);
    this->told.clear();
  }
  EXPECT_THAT(this->Names(), IsEmpty());
  EXPECT_THAT(testsupport::TreeOf(this->folder.Path()).size(), 2U) << "the archive and the target";
}

TYPED_TEST(Router, AsksAboutExistingFilesAsARunDoes) {
  this->Make({{"A", "new"}, {"B", "new"}});
  this->Set({.bConfirmReplace = 1});
  for (const char* name : {"out/a", "out/b"}) {
    testsupport::WriteFile(this->folder.Path(name), "old");
  }
  this->host.dialogAnswers = {testsupport::DialogAnswer::Press(testsupport::kNo),
                              testsupport::DialogAnswer::Press(testsupport::kYes)};
  this->Pass([&](const RoutedItem& item) {
    return Route::To(this->Place(L"", item.path == L"A" ? L"a" : L"b"));
  });
  EXPECT_THAT(this->Out(), ElementsAre(Pair("a", "old"), Pair("b", "new")));
  ASSERT_EQ(this->told.size(), 2U);
  EXPECT_EQ(this->told[0].result, ItemResult::kKept);
}

TYPED_TEST(Router, FindsDamageInATest) {
  this->Make({{"A", "first"}, {"B", "DAMAGED DATA IN THE MIDDLE OF THE ARCHIVE"}, {"C", "last"}});
  std::string bytes = testsupport::ReadFile(this->folder.Path("x"));
  const std::size_t data = bytes.find("DAMAGED");
  // Images have no checksums, and packed data does not show.
  if (std::is_same_v<typename TypeParam::Unpacker, CIsoUnpacker> || data == bytes.npos) return;
  bytes[data] ^= 1;
  ASSERT_TRUE(this->OpenBytes(bytes) && this->unpacker.FindFile());
  ASSERT_TRUE(this->unpacker.SetOptions({.goOn = true}));
  this->host.messageBoxAnswers = {IDOK};
  Keeper keeper;
  this->unpacker.UnpackItems({}, [&](const RoutedItem&) { return Route::Into(keeper); });
  ASSERT_EQ(keeper.kept.size(), 3U);
  EXPECT_EQ(keeper.kept[1].result, ItemResult::kFailed);
}

TYPED_TEST(Router, IsInterruptedAsARunIs) {
  this->Make({{"A", "a"}, {"B", Pattern(9'000'000)}, {"C", "c"}});
  this->StopIn(L"B", {IDYES});
  Keeper keeper;
  EXPECT_FALSE(this->Pass([&](const RoutedItem&) { return Route::Into(keeper); }));
  EXPECT_EQ(keeper.kept.size(), 2U);
  ASSERT_EQ(this->told.size(), 3U);
  EXPECT_EQ(this->told[1].result, ItemResult::kFailed);
  EXPECT_EQ(this->told[2].result, ItemResult::kNotReached);
  EXPECT_THAT(this->ends, ElementsAre(Pair(ItemReason::kInterrupted, L"")));
}

TYPED_TEST(Router, StopsWhileItOpens) {
  // The engine for RAR opens archives without asking anybody.
  if (requires { this->unpacker.GetComment(); }) return;
  this->Make({{"A", "a"}});
  ASSERT_TRUE(this->unpacker.SetOptions({.pumpAlways = true}));
  this->host.messageBoxAnswers = {IDYES};
  this->host.PostStop();
  EXPECT_FALSE(this->Open() && this->unpacker.FindFile());
  EXPECT_EQ(this->host.messageBoxes.size(), 1U);
  EXPECT_TRUE(this->Open() && this->unpacker.FindFile());
  EXPECT_TRUE(this->Pass([](const RoutedItem&) { return Route::PassOver(); }));
  EXPECT_EQ(this->host.messageBoxes.size(), 1U) << "one stop, one question";
}

TYPED_TEST(Router, LetsExceptionsOfSinksThrough) {
  this->Make({{"A", Pattern(3'000'000)}, {"B", "b"}});
  Keeper keeper;
  keeper.onWrite = []() -> bool { throw std::runtime_error("sink"); };
  const auto all = [&](const RoutedItem&) { return Route::Into(keeper); };
  EXPECT_THROW(this->Pass(all), std::runtime_error);
  keeper.onWrite = nullptr;
  keeper.kept.clear();
  EXPECT_TRUE(this->Pass(all));
  EXPECT_EQ(keeper.kept.size(), 2U);
}

class CabRouter : public testsupport::UnpackTest<CCabUnpacker> {};

TEST_F(CabRouter, TellsItemsApartThatDifferInCaseOnly) {
  testsupport::CabBuilder builder;
  builder.Add(testsupport::CabMethod::kMszip, {{"a", "small"}, {"A", "large"}});
  ASSERT_TRUE(OpenBytes(builder.Build()) && unpacker.FindFile());
  Keeper keeper;
  EXPECT_TRUE(unpacker.UnpackItems({}, [&](const RoutedItem&) { return Route::Into(keeper); }));
  ASSERT_EQ(keeper.kept.size(), 2U);
  EXPECT_EQ(keeper.kept[0].bytes, "small");
  EXPECT_EQ(keeper.kept[1].bytes, "large");
}

}  // namespace
