// Archives whose files end early, in all formats: whatever is missing is told.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "morvunp/platform/text.h"
#include "support/bytes.h"
#include "support/formats.h"
#include "support/unpacktest.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemResult;

template <class F>
class Cut : public testsupport::UnpackTest<typename F::Unpacker> {
 protected:
  /// Images are mostly empty. What they begin with is common to all of them, and
  /// without it they are not opened.
  static constexpr bool kIsImage = std::is_same_v<typename F::Unpacker, CIsoUnpacker>;
  static constexpr std::uintmax_t kStep = kIsImage ? 97 : 1;
  static constexpr std::size_t kSize = kIsImage ? 5000 : 40;
  static constexpr std::uintmax_t kLongest = 40'000;

  /// From the end on, cuts the archive to each length and calls `check`.
  template <class Check>
  void CutEverywhere(Check check) {
    const std::string path = this->folder.Path("x");
    const std::uintmax_t size = std::filesystem::file_size(path);
    const std::uintmax_t least = size - std::min(size, kLongest);
    for (std::uintmax_t length = size; length > least + kStep;) {
      length -= kStep;
      std::filesystem::resize_file(path, length);
      std::filesystem::remove_all(this->folder.Path("out"));
      std::filesystem::create_directory(this->folder.Path("out"));
      check(length);
      if (this->HasFailure()) return;
    }
  }

  /// No item that was told as whole may be less than it is, and what is told of
  /// the others is that they are cut.
  void CheckTold(const std::map<std::string, std::string>& whole) {
    const std::map<std::string, std::string> out = this->Out();
    for (const auto& report : this->told) {
      if (report.result == ItemResult::kWritten) {
        const std::string name = morvunp::platform::ToNativePath(report.path);
        EXPECT_EQ(out.at(name), whole.at(name));
      } else if (report.result == ItemResult::kFailed) {
        EXPECT_EQ(report.reason, ItemReason::kCutShort);
      }
    }
  }
};

TYPED_TEST_SUITE(Cut, testsupport::Formats, testsupport::FormatNames);

TYPED_TEST(Cut, IsToldWhereverTheFileEnds) {
  TypeParam::kWrite(
      this->folder.Path("x"),
      {{"D/A", testsupport::Pattern(30)}, {"E/B", "b"}, {"T", testsupport::Pattern(this->kSize)}});
  this->Set({.bConfirmReplace = 0});
  this->Listen();
  ASSERT_TRUE(this->Open());
  EXPECT_TRUE(this->unpacker.FindFile() && this->Unpack());
  EXPECT_TRUE(this->unpacker.IsListComplete());
  EXPECT_EQ(this->ends.back().first, ItemReason::kNone);
  const std::map<std::string, std::string> whole = this->Out();
  int cuts = 0;
  this->CutEverywhere([&](std::uintmax_t length) {
    SCOPED_TRACE(length);
    if (!this->Open()) return;
    const bool isKnownEarly = !this->unpacker.IsListComplete();
    this->Listen();
    this->unpacker.FindFile();
    this->host.messageBoxAnswers = {IDOK};
    this->Unpack();
    const bool isWhole = this->Out() == whole;
    EXPECT_TRUE(isWhole || isKnownEarly);
    EXPECT_EQ(this->unpacker.IsListComplete(), !isKnownEarly);
    EXPECT_EQ(this->unpacker.GetWalkProblem(),
              isKnownEarly ? ItemReason::kCutShort : ItemReason::kNone);
    EXPECT_EQ(this->ends.back().first, this->unpacker.GetWalkProblem());
    this->CheckTold(whole);
    cuts += isKnownEarly ? 1 : 0;
  });
  // The engine of 7z opens none.
  const bool isOpened = !std::is_same_v<typename TypeParam::Unpacker, C7zUnpacker>;
  EXPECT_EQ(cuts > 10, isOpened);
}

}  // namespace
