// What the system can do to an unpack: calls that fail or come short, a full
// disk, a target folder that vanishes, memory that runs out. Each run of each
// format is repeated with the first call failing, the second, and so on until
// none is left to fail. What is told of the items is held against the disk.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <optional>
#include <string_view>

#include "faults/faults.h"
#include "morvunp/morvunp.h"
#include "morvunp/rarunpacker.h"
#include "support/archives.h"
#include "support/cabbuilder.h"
#include "support/tempfolder.h"

namespace {

using morvunp::ItemReason;
using morvunp::ItemReport;
using morvunp::ItemResult;
using testsupport::Calls;
using testsupport::Fault;
using testsupport::FaultPlan;
using testsupport::TempFolder;

using Tree = std::map<std::string, std::string>;

/// More than one block of every copy loop; no two of them alike.
std::string Big() {
  std::string text;
  for (int i = 0; text.size() < 300'000; ++i) text += std::to_string(i * 7919LL) + "\n";
  return text;
}

/// What every archive here holds, in this order.
const Tree kContent{{"D/", ""}, {"D/A.TXT", "small"}, {"Z.BIN", Big()}};
constexpr std::array<std::wstring_view, 3> kPaths{L"D", L"D\\A.TXT", L"Z.BIN"};
constexpr std::array<const char*, 3> kNames{"D/", "D/A.TXT", "Z.BIN"};
constexpr std::size_t kBig = 2;

template <void (*write)(const std::string&, const testsupport::Items&)>
void Write(const TempFolder& folder) {
  testsupport::Items items;
  for (const auto& [path, data] : kContent) items.push_back({path, data});
  write(folder.Path("x"), items);
}

void WriteCabinets(const TempFolder& folder) {
  testsupport::CabBuilder builder;
  builder.Add(testsupport::CabMethod::kMszip,
              {{"D\\A.TXT", kContent.at("D/A.TXT")}, {"Z.BIN", kContent.at("Z.BIN")}});
  const auto set = builder.BuildSet(100'000, {"x", "2.cab"});
  testsupport::WriteFile(folder.Path("x"), set.at(0));
  testsupport::WriteFile(folder.Path("2.cab"), set.at(1));
}

/// What is told of one unpack. Kept without taking memory, which may be short.
struct Told {
  struct Item {
    int count = 0;
    ItemResult result{};
    ItemReason reason{};
    int systemError = 0;
  };

  void Note(const ItemReport& report) {
    const auto path = std::find(kPaths.begin(), kPaths.end(), report.path);
    ASSERT_NE(path, kPaths.end()) << "an unknown item is told";
    Item& item = items.at(static_cast<std::size_t>(path - kPaths.begin()));
    item = {item.count + 1, report.result, report.reason, report.systemError};
  }
  void NoteEnd(const morvunp::RunReport& report) {
    ++ends;
    reasonOfEnd = report.reason;
  }

  /// The archive could be opened and listed.
  bool hasRun = false;
  std::array<Item, kPaths.size()> items;
  int ends = 0;
  ItemReason reasonOfEnd{};
};

/// What the unpacks of a test are to do beyond the contract.
morvunp::UnpackOptions options;

template <class U>
bool UnpackWith(U& unpacker, const TempFolder& folder, const wchar_t* file, Told& told) {
  INIUNPACK settings;
  settings.bConfirmReplace = 0;
  unpacker.SetIni(settings);
  unpacker.SetOptions(options);
  unpacker.SetItemReport([&told](const ItemReport& report) { told.Note(report); },
                         [&told](const morvunp::RunReport& report) { told.NoteEnd(report); });
  const std::wstring target = folder.LibraryPath("out");
  if (!unpacker.OpenArchive(folder.LibraryPath("x")) || !unpacker.FindFile()) return false;
  told.hasRun = true;
  const bool result =
      file != nullptr ? unpacker.UnpackFile(file, target) : unpacker.UnpackArchive(target);
  // The result is that of the last item: there may be more that none speaks of.
  return result && unpacker.GetWalkProblem() == ItemReason::kNone;
}

/// Nothing when memory ran out.
using Result = std::optional<bool>;

struct Attempt {
  Result result = false;
  /// False: nothing failed.
  bool hasStruck = true;
  Told told;
};

/// One unpack, which `check` looks at; what is thrown but std::bad_alloc goes
/// through. After a single failure the object works as ever, over what came out.
template <class U>
void Unpack(const TempFolder& folder, const wchar_t* file, const FaultPlan& plan,
            const std::function<void(const Attempt&)>& check) {
  U unpacker;
  Attempt attempt;
  try {
    attempt.hasStruck = testsupport::RunWithFault(
        plan, [&] { attempt.result = UnpackWith(unpacker, folder, file, attempt.told); });
  } catch (const std::bad_alloc&) {
    attempt.result.reset();
  }
  check(attempt);
  if (plan.persists) return;
  mkdir(folder.Path("out").c_str(), 0777);
  for (const wchar_t* again : {L"Z.BIN", static_cast<const wchar_t*>(nullptr)}) {
    Told told;
    EXPECT_TRUE(UnpackWith(unpacker, folder, again, told)) << "the object is of no more use";
    EXPECT_EQ(told.items[kBig].result, ItemResult::kWritten);
  }
}

struct Format {
  const char* name;
  void (*write)(const TempFolder&);
  void (*unpack)(const TempFolder&, const wchar_t*, const FaultPlan&,
                 const std::function<void(const Attempt&)>& check);
  /// An archive that cannot be read shows in the result. The 7z engine leaves
  /// that to the CRC of each item, which is the host's to look at; for the RAR
  /// engine the archive ends there.
  bool tellsOfReads = true;
  /// Reads and writes are ours. The RAR engine has its own.
  bool ownTransfers = true;
  /// Number of items: a cabinet has none for a folder.
  std::size_t items = kPaths.size();
};

std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }

class Faults : public testing::TestWithParam<Format> {
 protected:
  void SetUp() override {
    options = {};
    GetParam().write(folder);
    before = testsupport::TreeOf(folder.Path());
    // What a process asks the system for only once has been asked for then.
    RunOnce({Calls::kFiles, Fault::kError, INT_MAX}, nullptr,
            [](const Attempt& attempt) { ASSERT_EQ(attempt.result, Result(true)); });
  }

  /// Every point of failure once. `check` gets the result of each.
  template <class Check>
  void Sweep(FaultPlan plan, const wchar_t* file, Check check) {
    bool hasStruck = true;
    for (plan.after = 0; hasStruck && !HasFailure(); ++plan.after) {
      SCOPED_TRACE("call " + std::to_string(plan.after));
      RunOnce(plan, file, [&](const Attempt& attempt) {
        hasStruck = attempt.hasStruck;
        EXPECT_TRUE(hasStruck || attempt.result == Result(true));
        if (!hasStruck) return;
        CheckTold(attempt, plan, file == nullptr);
        if constexpr (requires { check(attempt); }) {
          check(attempt);
        } else {
          check(attempt.result);
        }
      });
    }
    EXPECT_GT(plan.after, 1) << "nothing was there to fail";
  }

  template <class Check>
  void RunOnce(const FaultPlan& plan, const wchar_t* file, Check check) {
    std::filesystem::remove_all(folder.Path("out"));
    mkdir(folder.Path("out").c_str(), 0777);
    if (!existing.empty()) testsupport::WriteFile(folder.Path("out/Z.BIN"), existing);
    const auto open = OpenFiles();
    GetParam().unpack(folder, file, plan, [&](const Attempt& attempt) {
      CheckTrees();
      check(attempt);
    });
    EXPECT_EQ(OpenFiles(), open) << "a file was left open";
    CheckTrees();
    EXPECT_TRUE(plan.persists || out == kContent) << "the second unpack";
  }

  /// Nothing but what the archive holds came out, as far as it goes, and
  /// nothing around the target folder changed.
  void CheckTrees() {
    out.clear();
    Tree around = testsupport::TreeOf(folder.Path());
    std::erase_if(around, [&](const auto& entry) {
      if (!entry.first.starts_with("out/")) return false;
      if (entry.first != "out/") out.insert({entry.first.substr(4), entry.second});
      return true;
    });
    EXPECT_TRUE(around == before) << "something changed outside the target folder";
    for (const auto& [path, bytes] : out) {
      const auto expected = kContent.find(path);
      ASSERT_NE(expected, kContent.end()) << path;
      EXPECT_TRUE(expected->second.starts_with(bytes) || bytes == existing)
          << path << " holds what it should not";
    }
  }

  /// What is told is so, and nothing is left untold.
  void CheckTold(const Attempt& attempt, const FaultPlan& plan, bool isArchive) {
    const Told& told = attempt.told;
    std::size_t known = 0;
    for (std::size_t i = 0; i < kPaths.size(); ++i) {
      SCOPED_TRACE(kNames[i]);
      known += told.items[i].count != 0 ? 1 : 0;
      if (told.items[i].count != 0) CheckItem(told.items[i], kNames[i], plan);
    }
    EXPECT_TRUE(told.hasRun || known == 0);
    // For the RAR engine an archive that cannot be read ends there.
    const bool isRead = (plan.calls == Calls::kFiles || plan.calls == Calls::kTransfers) &&
                        (plan.persists || !testsupport::HasStruckOutput());
    const bool mayEnd = isRead && !GetParam().ownTransfers;
    EXPECT_TRUE(attempt.result != Result(true) || told.items[kBig].count == 1 || mayEnd);
    if (!told.hasRun || !isArchive || !attempt.result) return;
    EXPECT_EQ(told.ends, 1);
    EXPECT_TRUE(known == GetParam().items || told.reasonOfEnd != ItemReason::kNone || mayEnd);
  }

  void CheckItem(const Told::Item& item, const std::string& path, const FaultPlan& plan) {
    EXPECT_EQ(item.count, 1);
    const bool isThere =
        item.result == ItemResult::kWritten || item.result == ItemResult::kFolderMade;
    EXPECT_TRUE(!isThere || mayVanish || IsWhole(path));
    if (item.result != ItemResult::kFailed) return;
    EXPECT_NE(item.reason, ItemReason::kNone);
    EXPECT_TRUE(plan.calls != Calls::kMemory || item.reason == ItemReason::kNoMemory);
    const int error = plan.fault == Fault::kEvent ? eventError : EIO;
    EXPECT_EQ(item.systemError, item.reason == ItemReason::kSystem ? error : 0);
  }

  bool IsWhole(const std::string& path) const {
    return out.contains(path) && out.at(path) == kContent.at(path);
  }

  static std::ptrdiff_t OpenFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  TempFolder folder;
  /// What Z.BIN holds at first; empty when it is to be a new file.
  std::string existing;
  /// What the system says of a failure that follows from an event.
  int eventError = ENOENT;
  /// The event takes away what came out before.
  bool mayVanish = false;
  Tree before;
  Tree out;
};

TEST_P(Faults, AFailedCallFailsTheItemItBelongsTo) {
  for (const bool persists : {false, true}) {
    for (const wchar_t* file : {static_cast<const wchar_t*>(nullptr), L"Z.BIN"}) {
      Sweep({Calls::kFiles, Fault::kError, 0, persists}, file, [&](const Attempt& attempt) {
        // The result is that of the last item, or of the engine.
        const bool isTold = attempt.told.items[kBig].result == ItemResult::kFailed;
        EXPECT_TRUE(attempt.result == Result(false) || (file == nullptr && isTold) ||
                    IsWhole("Z.BIN") || !GetParam().tellsOfReads);
      });
    }
  }
}

/// What failed, and that the system refused, is told of the one item that it
/// belongs to; engines that are asked for a whole run end it there.
TEST_P(Faults, AFailedOutputIsToldOfItsItem) {
  const auto isRefused = [](const Told::Item& item) {
    return item.result == ItemResult::kFailed && item.reason == ItemReason::kSystem &&
           item.systemError == EIO;
  };
  for (const wchar_t* file : {static_cast<const wchar_t*>(nullptr), L"Z.BIN"}) {
    Sweep({Calls::kOutput, Fault::kError, 0}, file, [&](const Attempt& attempt) {
      const auto& items = attempt.told.items;
      EXPECT_EQ(std::count_if(items.begin(), items.end(), isRefused), 1);
      for (const Told::Item& item : items) {
        const bool isFine = item.result == ItemResult::kWritten ||
                            item.result == ItemResult::kFolderMade ||
                            item.result == ItemResult::kNotReached;
        EXPECT_TRUE(item.count == 0 || isFine || isRefused(item));
      }
    });
  }
}

TEST_P(Faults, AFailedWriteShowsInTheResult) {
  Sweep({Calls::kWrites, Fault::kError, 0, true}, nullptr,
        [](Result result) { EXPECT_EQ(result, Result(false)); });
}

TEST_P(Faults, ShortAndInterruptedTransfersGoOn) {
  for (const Fault fault : {Fault::kShort, Fault::kInterrupted}) {
    Sweep({Calls::kTransfers, fault, 0}, nullptr, [&](Result result) {
      if (!GetParam().ownTransfers) return;
      EXPECT_EQ(result, Result(true));
      EXPECT_TRUE(out == kContent);
    });
  }
}

TEST_P(Faults, MissingMemoryFailsOrThrows) {
  for (const bool persists : {false, true}) {
    Sweep({Calls::kMemory, Fault::kError, 0, persists}, nullptr, [&](Result result) {
      EXPECT_TRUE(result != Result(true) || IsWhole("Z.BIN") || !GetParam().tellsOfReads);
    });
  }
}

TEST_P(Faults, AnExistingFileIsBackOrReplaced) {
  existing = "what was there before";
  options.safeReplace = true;
  for (const Calls calls : {Calls::kMemory, Calls::kOutput, Calls::kFiles}) {
    Sweep({calls, Fault::kError, 0}, nullptr,
          [&](Result) { EXPECT_TRUE(IsWhole("Z.BIN") || out["Z.BIN"] == existing); });
  }
}

class RarFaults : public Faults {};

TEST_P(RarFaults, AnExistingFileIsBackOrReplacedInAnyCase) {
  existing = "what was there before";
  for (const Calls calls : {Calls::kMemory, Calls::kOutput}) {
    Sweep({calls, Fault::kError, 0}, nullptr,
          [&](Result) { EXPECT_TRUE(IsWhole("Z.BIN") || out["Z.BIN"] == existing); });
  }
}

TEST_P(Faults, NothingIsLeftOfABrokenFileThatNobodyWants) {
  options.brokenFiles = morvunp::BrokenFiles::kRemove;
  for (const Calls calls : {Calls::kMemory, Calls::kWrites, Calls::kOutput}) {
    Sweep({calls, Fault::kError, 0}, nullptr, [&](Result) {
      for (const char* name : kNames) EXPECT_TRUE(IsWhole(name) || !out.contains(name)) << name;
    });
  }
}

TEST_P(Faults, AVanishedTargetFolderHarmsNothingElse) {
  const std::string target = folder.Path("out");
  mayVanish = true;
  const auto vanish = [&] { std::filesystem::remove_all(target); };
  Sweep({Calls::kFiles, Fault::kEvent, 0, false, vanish}, nullptr, [&](Result) {});
}

TEST_P(Faults, AFullDiskFailsTheFileThatDoesNotFit) {
  signal(SIGXFSZ, SIG_IGN);
  rlimit saved{};
  getrlimit(RLIMIT_FSIZE, &saved);
  for (const rlim_t room : {0U, 1U, 4096U, 100'000U, 262'144U, 299'999U}) {
    SCOPED_TRACE(room);
    const rlimit full{room, saved.rlim_max};
    // The limit comes with the first call, so that it holds for the unpack only.
    const auto fill = [&] { setrlimit(RLIMIT_FSIZE, &full); };
    const FaultPlan plan{Calls::kFiles, Fault::kEvent, 0, false, fill};
    eventError = EFBIG;
    RunOnce(plan, nullptr, [&](const Attempt& attempt) {
      setrlimit(RLIMIT_FSIZE, &saved);
      EXPECT_EQ(attempt.result, Result(false));
      EXPECT_FALSE(IsWhole("Z.BIN"));
      CheckTold(attempt, plan, true);
      const bool isCounted = room >= kContent.at("D/A.TXT").size();
      EXPECT_EQ(isCounted, IsWhole("D/A.TXT"));
      EXPECT_EQ(attempt.told.items[isCounted ? kBig : 1].systemError, EFBIG);
    });
  }
  signal(SIGXFSZ, SIG_DFL);
}

std::string NameOf(const testing::TestParamInfo<Format>& test) { return test.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Formats, Faults,
    testing::Values(Format{"Iso", Write<testsupport::WriteIso>, Unpack<CIsoUnpacker>},
                    Format{"Udf", Write<testsupport::WriteUdf>, Unpack<CIsoUnpacker>},
                    Format{"Cabinet", WriteCabinets, Unpack<CCabUnpacker>, true, true, 2},
                    Format{"SevenZip", Write<testsupport::Write7z>, Unpack<C7zUnpacker>, false}),
    NameOf);

#if MORVUNP_HAS_RAR
const auto kRar = testing::Values(
    Format{"Rar", Write<testsupport::WriteRar>, Unpack<CRarUnpacker>, false, false});
INSTANTIATE_TEST_SUITE_P(RarFormat, Faults, kRar, NameOf);
INSTANTIATE_TEST_SUITE_P(RarFormat, RarFaults, kRar, NameOf);
#else
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RarFaults);
#endif

}  // namespace
