// Symbolic links in 7z archives, where they are asked for.
#include <gmock/gmock.h>
#include <unistd.h>
#include <zlib.h>

#include <cstring>
#include <filesystem>

#include "support/archives.h"
#include "support/bytes.h"
#include "support/countingsink.h"
#include "support/unpacktest.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemResult;
using testing::ElementsAre;
using testing::Pair;
using testsupport::CountingSink;
using testsupport::Items;
using testsupport::WriteFile;

/// The sums of an archive whose headers were changed.
void SumUp(std::string& archive) {
  const auto sumOf = [&](std::size_t start, std::size_t length) {
    const auto* const bytes = reinterpret_cast<const Bytef*>(archive.data() + start);
    return testsupport::Little(crc32(0, bytes, static_cast<uInt>(length)), 4);
  };
  std::uint64_t header[2];
  std::memcpy(header, archive.data() + 12, sizeof header);
  testsupport::Put(archive, 28, sumOf(32 + header[0], header[1]));
  testsupport::Put(archive, 8, sumOf(12, 20));
}

class SevenZipLinks : public testsupport::UnpackTest<C7zUnpacker> {
 protected:
  /// Each link is a file with another type in its mode.
  void Make(const Items& links, const Items& files) {
    const testsupport::TempFolder in;
    std::string names;
    const auto add = [&](const testsupport::Item& item, mode_t mode) {
      WriteFile(in.Path(item.path), item.data);
      chmod(in.Path(item.path).c_str(), mode);
      names += " " + item.path;
    };
    for (const auto& link : links) add(link, 0644);
    for (const auto& file : files) add(file, 0600);
    const std::string command = "cd '" + in.Path() + "' && touch -d 2001-02-03T04:05:06Z" + names +
                                " && 7z a -bso0 -mx0 -mhc=off -ms=off x.7z" + names;
    ASSERT_EQ(std::system(command.c_str()), 0);
    archive = testsupport::ReadFile(in.Path("x.7z"));
    ReplaceAll(testsupport::Little(0x81A48020, 4), testsupport::Little(0xA1FF8020, 4));
    Reopen();
  }
  void ReplaceAll(const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = archive.find(from, at)) != archive.npos;) {
      testsupport::Put(archive, at, to);
    }
    SumUp(archive);
  }
  void Reopen() {
    ASSERT_TRUE(OpenBytes(archive));
    Set({});
    unpacker.SetOptions({.links = true});
    Listen();
  }
  Told ToldOf(const std::wstring& path) const {
    for (const Told& report : told) {
      if (report.path == path) return report;
    }
    return {};
  }

  std::string archive;
};

TEST_F(SevenZipLinks, LinksComeOutAsLinks) {
  Make({{"1", "FILE"}, {"2", "D"}, {"3", "back\\slash"}, {"D/4", "../FILE"}}, {{"FILE", "data"}});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("1@", "FILE"), Pair("2@", "D"), Pair("3@", "back\\slash"),
                                 Pair("D/", ""), Pair("D/4@", "../FILE"), Pair("FILE", "data")));
  EXPECT_EQ(StatusOf("1").st_mtime, testsupport::kItemTime);
  EXPECT_THAT(host.fileTreePaths, testing::Contains(Target() + L"\\1"));
  ASSERT_EQ(told.size(), 5U);
  for (const auto& report : told) EXPECT_EQ(report.result, ItemResult::kWritten);

  CountingSink sink;
  unpacker.UnpackItems(Target(), [&](const auto&) { return morvunp::Route::Into(sink); });
  EXPECT_EQ(sink.bytes, 4U + 1 + 10 + 7 + 4) << "a sink has what the link says";
  std::filesystem::remove(folder.Path("out/1"));
  unpacker.SetOptions({});
  EXPECT_TRUE(Unpack(L"1"));
  EXPECT_EQ(StatusOf("1").st_mode & S_IFMT, mode_t{S_IFREG});
}

TEST_F(SevenZipLinks, TheEnginesOwnArchivesHaveLinks) {
  WriteFile(folder.Path("in/D/FILE"), "data");
  ASSERT_EQ(symlink("D", folder.Path("in/L").c_str()), 0);
  ASSERT_EQ(symlink("FILE", folder.Path("in/D/M").c_str()), 0);
  const std::string command = "cd '" + folder.Path("in") + "' && 7z a -bso0 -snl ../made.7z *";
  ASSERT_EQ(std::system(command.c_str()), 0);
  archive = testsupport::ReadFile(folder.Path("made.7z"));
  Reopen();
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out(), testsupport::TreeOf(folder.Path("in")));
}

TEST_F(SevenZipLinks, NoLinkLeadsOut) {
  WriteFile(folder.Path("planted"), "untouched");
  WriteFile(folder.Path("out/OLD"), "old");
  Make({{"1", "../planted"},
        {"2", folder.Path("planted")},
        {"D/3", "../../planted"},
        {"D/4", "E/../../../planted"},
        {"OLD", "/etc/passwd"}},
       {{"GOOD", "good"}});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("D/", ""), Pair("GOOD", "good"), Pair("OLD", "old")));
  for (const wchar_t* path : {L"1", L"2", L"D\\3", L"D\\4", L"OLD"}) {
    EXPECT_EQ(ToldOf(path).result, ItemResult::kRefused) << path;
    EXPECT_EQ(ToldOf(path).reason, ItemReason::kUnsafeLink) << path;
  }
  // Nor does anything come out through one that stays inside.
  Make({{"L", "D"}}, {{"D/A", "good"}, {"M/A", "evil"}});
  using namespace std::string_literals;
  ReplaceAll("M\0/\0A\0"s, "L\0/\0A\0"s);
  Reopen();
  Unpack();
  EXPECT_EQ(Out("D/A"), "good");
  EXPECT_EQ(ToldOf(L"L\\A").reason, ItemReason::kInTheWay);
}

TEST_F(SevenZipLinks, WhatNoLinkCanSayIsDamage) {
  Make({{"1", std::string(4'095, 'a')},
        {"2", std::string(4'096, 'a')},
        {"3", std::string("a\0b", 3)},
        {"4", testsupport::Pattern(9'000'000)},
        {"5", ""}},
       {{"GOOD", "good"}});
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(ToldOf(L"1").result, ItemResult::kWritten);
  for (const wchar_t* path : {L"2", L"3", L"4", L"5"}) {
    EXPECT_EQ(ToldOf(path).reason, ItemReason::kDamaged) << path;
  }
  EXPECT_THAT(Names(), ElementsAre("1@", "GOOD"));

  // Where the archive itself is damaged, what was there stays.
  WriteFile(folder.Path("out/L"), "old");
  Make({{"L", "FILE"}}, {{"M", "data"}});
  const std::string whole = archive;
  archive[archive.find("FILE")] ^= 1;
  Reopen();
  Unpack();
  EXPECT_EQ(ToldOf(L"L").reason, ItemReason::kDamaged);
  EXPECT_EQ(Out("L"), "old");
  EXPECT_EQ(Out("M"), "data");
  archive = whole;
  Reopen();
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(S_ISLNK(StatusOf("L").st_mode)) << "a link takes the place of a file";
}

}  // namespace
