// What all unpackers share: numbers, hashes, folders, places and the gate.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwctype>
#include <set>

#include "frame/filesystem.h"
#include "frame/foldermap.h"
#include "frame/keyedhash.h"
#include "frame/pathindex.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "morvunp/morvunp.h"
#include "support/fakehost.h"
#include "support/rooms.h"
#include "support/tempfolder.h"

namespace {

using testing::ElementsAre;
using testsupport::FakeHost;
using testsupport::TempFolder;

TEST(Summary, GroupsNumbersAndTruncatesRatios) {
  EXPECT_EQ(frame::FormatOfNumber64(999), L"999");
  EXPECT_EQ(frame::FormatOfNumber64(~0ULL), L"18 446 744 073 709 551 615");
  EXPECT_EQ(frame::SizesText(0, 5), L"Size - 0 bytes, Packed - 5 bytes, Ratio - 0%");
  EXPECT_EQ(frame::SizesText(1000, 1500),
            L"Size - 1 000 bytes, Packed - 1 500 bytes, Ratio - 150%");
  EXPECT_EQ(frame::SizesText(3, 2), L"Size - 3 bytes, Packed - 2 bytes, Ratio - 66%");
  EXPECT_EQ(frame::PercentageOf(1ULL << 39, 1ULL << 40), 50);
  EXPECT_EQ(frame::ConvUInt64ToDouble((5ULL << 32) | 7), 5 * 4294967296.0 + 7);
  EXPECT_GT(frame::PercentageOf(~0ULL, 1), 0) << "more than an integer holds is cut, not undefined";
}

TEST(Summary, FormatsLocalTimes) {
  EXPECT_EQ(frame::LocalTimeText(86400 * 365, L"%Y-%m-%d %H"), L"1971-01-01 00");
  EXPECT_EQ(frame::LocalTimeText(-1, L"%Y-%m-%d %H:%M:%S"), L"1969-12-31 23:59:59");
  EXPECT_EQ(frame::LocalTimeText(1LL << 60, L"%Y"), L"");
  EXPECT_EQ(frame::LocalTimeText(0, std::wstring(200, L'x').c_str()), L"") << "128 characters fit";
}

TEST(FolderMap, HashesUtf16Units) {
  for (const auto& [text, key] :
       {std::pair(L"", 0U), {L"a", 97U}, {L"ab", 3299U}, {L"\U0001F600", 0xD83DU * 33 + 0xDE00U}}) {
    EXPECT_EQ(frame::HashKey(text), key);
  }
}

TEST(FolderMap, RegistersAncestorsOnce) {
  frame::FolderMap map;
  EXPECT_EQ(frame::CheckFolderMap(map, L"A\\B\\C"), 3U);
  EXPECT_EQ(frame::CheckFolderMap(map, L"A\\B\\D"), 1U);
  EXPECT_EQ(frame::CheckFolderMap(map, L"A"), 0U);
  EXPECT_EQ(map.size(), 4U);
  // Two texts of one hash: 33 * 'b' + 'A' equals 33 * 'a' + 'b'.
  EXPECT_EQ(frame::CheckFolderMap(map, L"bA"), 1U);
  EXPECT_EQ(frame::CheckFolderMap(map, L"ab"), 0U);
}

TEST(FolderMap, ListsFoldersIgnoringCase) {
  std::vector<std::wstring> list;
  EXPECT_TRUE(frame::CheckFolder(list, L"A\\b"));
  EXPECT_FALSE(frame::CheckFolder(list, L"a\\C"));
  EXPECT_THAT(list, ElementsAre(L"A\\b", L"A", L"a\\C"));
}

TEST(KeyedHash, SpreadsNumbersThatWereChosenForOneBucket) {
  std::set<std::size_t> buckets;
  for (ULONGLONG i = 0; i < 1009; ++i) buckets.insert(frame::KeyedHash{}(i * 1009) % 1009);
  EXPECT_GT(buckets.size(), 400U);
}

/// 64 names of which every sum of powers modulo 2^64 gives one hash, whatever
/// the base and the start: Thue-Morse sequences and their opposites cannot be
/// told apart by them.
std::vector<std::wstring> NamesOfOnePolynomialHash() {
  std::wstring sequence = L"a";
  std::wstring opposite = L"b";
  while (sequence.size() < 2048) {
    const std::wstring shorter = sequence;
    sequence += opposite;
    opposite += shorter;
  }
  std::vector<std::wstring> names;
  for (unsigned bits = 0; bits < 64; ++bits) {
    std::wstring& name = names.emplace_back();
    for (unsigned i = 0; i < 6; ++i) name += (bits >> i & 1) != 0 ? opposite : sequence;
  }
  return names;
}

TEST(PathIndex, LooksAtFewNamesWhateverAnArchiveChose) {
  const std::vector<std::wstring> names = NamesOfOnePolynomialHash();
  std::size_t looks = 0;
  const auto getPath = [&](std::size_t place, std::wstring& text) {
    ++looks;
    text = names[place];
  };
  frame::PathIndex index;
  // The first look-up walks, the second builds.
  EXPECT_EQ(index.Find(names.size(), getPath, L"none"), names.size());
  EXPECT_EQ(index.Find(names.size(), getPath, L"none"), names.size());
  looks = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::wstring path = names[i];
    path.front() = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(path.front())));
    EXPECT_EQ(index.Find(names.size(), getPath, path), i);
  }
  EXPECT_EQ(looks, names.size());
}

TEST(CreateFolder, MakesMissingAncestorsAndReportsThem) {
  const TempFolder folder;
  morvunp::CUnpackState state;
  std::vector<std::wstring> reports;
  const auto report = [&](const std::wstring& path) { reports.push_back(path); };
  const std::wstring top = folder.LibraryPath();
  EXPECT_TRUE(frame::CreateFolder(state, top + L"\\x\\y\\z", report));
  EXPECT_THAT(reports, ElementsAre(top + L"\\x", top + L"\\x\\y", top + L"\\x\\y\\z"));
  EXPECT_EQ(state.m_strLastTarget, top + L"\\x\\y\\z");
  EXPECT_TRUE(frame::CreateFolder(state, top + L"\\x\\y", report));
  EXPECT_EQ(reports.size(), 3U);
  testsupport::WriteFile(folder.Path("file"), "");
  EXPECT_FALSE(frame::CreateFolder(state, top + L"\\file", report));
  EXPECT_FALSE(frame::CreateFolder(state, top + L"\\file\\below", report));
  EXPECT_FALSE(frame::CreateFolder(state, L"", report));
  EXPECT_FALSE(frame::CreateFolder(state, L"not-there\\y", report));
  std::wstring endless = top + L"\\new";
  for (int i = 0; i < 2'100; ++i) endless += L"\\e";
  EXPECT_FALSE(frame::CreateFolder(state, endless, report) ||
               morvunp::MakeOutputFolder(endless, top));
  EXPECT_FALSE(frame::FileExists(top + L"\\new"));
  EXPECT_FALSE(testsupport::Exists("not-there"));
}

TEST(PathGate, LetsOnlySingleHarmlessComponentsThrough) {
  EXPECT_TRUE(morvunp::IsSafeItem(L"DOCS\\A.TXT", L"A.TXT"));
  EXPECT_TRUE(morvunp::IsSafeItem(L"...", L"..."));
  EXPECT_TRUE(morvunp::IsSafeItem(L"D\\C:x", L"C:x")) << "a drive only stands at the start";
  for (const std::wstring path : {L"", L".", L"..", L"A\\..\\B", L"A\\.\\B", L"\\A", L"A\\\\B",
                                  L"A\\", L"C:x", L"c:\\x", L"a/b", L"A\\/etc"}) {
    EXPECT_FALSE(morvunp::IsSafeItem(path, path.substr(path.rfind(L'\\') + 1)))
        << std::string(path.begin(), path.end());
  }
  EXPECT_FALSE(morvunp::IsSafeItem(std::wstring(L"a\0b", 3), std::wstring(L"a\0b", 3)));
  EXPECT_FALSE(morvunp::IsSafeItem(L"a\\b", L"a\\b")) << "a name that would become two components";
}

TEST(Progress, SendsPercentagesAndNeverDivides) {
  FakeHost host;
  morvunp::CUnpackState state;
  frame::UpdateProgress(state, 1, 2, L"no window");
  state.m_hDialogProgress = host.progress;
  frame::UpdateProgress(state, 5, 0, L"");
  frame::UpdateProgress(state, 3, 2, L"over");
  EXPECT_THAT(host.progressMessages, ElementsAre(testsupport::ProgressMessage{0, L""},
                                                 testsupport::ProgressMessage{150, L"over"}));
}

}  // namespace
