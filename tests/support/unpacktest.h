// What the tests of each unpacker start from: a host, an empty target folder
// and a few short words.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>

#include <cerrno>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "morvunp/morvunp.h"
#include "support/fakehost.h"
#include "support/tempfolder.h"

namespace testsupport {

// Buttons of the dialog that asks before a file is replaced.
inline constexpr UINT kCancel = morvunp::kReplaceCancel;
inline constexpr UINT kNo = morvunp::kReplaceNo;
inline constexpr UINT kYes = morvunp::kReplaceYes;
inline constexpr UINT kYesToAll = morvunp::kReplaceYesToAll;

/// Types a password and presses OK.
inline DialogAnswer TypePassword(const std::wstring& password) {
  DialogAnswer answer = DialogAnswer::Press(IDOK);
  answer.typed = {{morvunp::kPasswordEdit, password}};
  return answer;
}

/// The local time zone until the end of a scope.
class TimeZone {
 public:
  explicit TimeZone(const char* name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~TimeZone() {
    setenv("TZ", "UTC", 1);
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
};

template <class U>
class UnpackTest : public testing::Test {
 protected:
  using Record = typename U::FullInfo;

  UnpackTest() {
    mkdir(folder.Path("out").c_str(), 0777);
    host.Attach(unpacker);
  }

  bool Open(const std::string& name = "x") {
    return unpacker.OpenArchive(folder.LibraryPath(name));
  }
  bool OpenBytes(const std::string& archive) {
    WriteFile(folder.Path("x"), archive);
    return Open();
  }
  void Set(const INIUNPACK& settings) { unpacker.SetIni(settings); }
  bool Unpack() { return unpacker.UnpackArchive(Target()); }
  bool Unpack(const std::wstring& path) { return unpacker.UnpackFile(path, Target()); }

  std::wstring Target() const { return folder.LibraryPath("out"); }
  std::map<std::string, std::string> Out() const { return TreeOf(folder.Path("out")); }
  std::string Out(const std::string& name) const { return ReadFile(folder.Path("out/" + name)); }
  std::vector<std::string> Names() const { return NamesIn(folder); }
  static std::vector<std::string> NamesIn(const TempFolder& place) {
    std::vector<std::string> names;
    for (const auto& [name, content] : TreeOf(place.Path("out"))) names.push_back(name);
    return names;
  }
  struct stat StatusOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(lstat(folder.Path("out/" + name).c_str(), &status), 0) << name;
    return status;
  }

  struct Told {
    ULONGLONG position = 0;
    std::wstring path;
    morvunp::ItemResult result{};
    morvunp::ItemReason reason{};
    int systemError = 0;
    std::wstring outputPath{};
    bool wasInPlace = false;
  };
  /// From here on, what is told of items and of the ends of runs is kept.
  void Listen() {
    told.clear();
    ends.clear();
    unpacker.SetItemReport(
        [this](const morvunp::ItemReport& report) {
          told.push_back({report.position, std::wstring(report.path), report.result, report.reason,
                          report.systemError, std::wstring(report.outputPath), report.wasInPlace});
        },
        [this](const morvunp::RunReport& report) {
          ends.emplace_back(report.reason, std::wstring(report.detail));
        });
  }
  /// What is told of an item that would take the place of the archive.
  static bool IsOfArchive(const Told& report) {
    return report.result == morvunp::ItemResult::kFailed &&
           report.reason == morvunp::ItemReason::kInTheWay && report.systemError == ETXTBSY;
  }

  /// The items by their positions, by a walk.
  std::map<ULONGLONG, std::wstring> Positions() {
    std::map<ULONGLONG, std::wstring> positions;
    morvunp::WalkItems<Record>(unpacker, [&](const Record& record) {
      positions.insert({unpacker.GetPosition(), record.strPath});
      return true;
    });
    return positions;
  }

  /// All items, by a walk.
  std::vector<Record> Records() {
    std::vector<Record> records;
    morvunp::WalkItems<Record>(unpacker, [&](const Record& record) {
      records.push_back(record);
      return true;
    });
    return records;
  }
  std::vector<std::wstring> Paths() {
    std::vector<std::wstring> paths;
    for (const Record& record : Records()) paths.push_back(record.strPath);
    return paths;
  }

  /// The user asks for a stop as soon as `name` is being written, and again
  /// after each answer but the last.
  void StopIn(const std::wstring& name, std::deque<int> answers) {
    const std::size_t last = host.messageBoxes.size() + answers.size();
    host.messageBoxAnswers = std::move(answers);
    host.onProgress = [this, name, last, posted = host.messageBoxes.size()]() mutable {
      if (!host.progressMessages.back().name.empty()) {
        isInFile = host.progressMessages.back().name == name;
      }
      if (!isInFile || posted == last || posted > host.messageBoxes.size()) return;
      ++posted;
      host.PostStop();
    };
  }

  TempFolder folder;
  FakeHost host;
  U unpacker;
  std::vector<Told> told;
  std::vector<std::pair<morvunp::ItemReason, std::wstring>> ends;

 private:
  bool isInFile = false;
};

}  // namespace testsupport
