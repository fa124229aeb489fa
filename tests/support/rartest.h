// What the tests of RAR archives start from: a folder, a host, an unpacker.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "morvunp/morvunp.h"
#include "platform/text.h"
#include "support/fakehost.h"
#include "support/rarbuilder.h"
#include "support/tempfolder.h"

namespace testsupport {

inline constexpr UINT kPasswordTemplate = 1014;
inline constexpr UINT kPasswordEdit = 1013;

inline std::string RarFixture(const std::string& name) {
  return std::string(MORVUNP_FIXTURES "/rar/") + name;
}

/// Types a password and presses OK.
inline DialogAnswer TypePassword(const std::wstring& password) {
  DialogAnswer answer = DialogAnswer::Press(IDOK);
  answer.typed = {{kPasswordEdit, password}};
  return answer;
}

/// Lets a test set and see what only the class itself can.
class TestedRarUnpacker : public CRarUnpacker {
 public:
  using CRarUnpacker::CallbackProc;
  using CRarUnpacker::LocateFile;
  using CRarUnpacker::m_bReusePassword;
};

class RarTest : public testing::Test {
 protected:
  void SetUp() override {
    mkdir(folder.Path("out").c_str(), 0777);
    host.Attach(unpacker);
    unpacker.SetProblemReport(
        [this](const std::wstring& path, RarProblem problem, const std::wstring&) {
          problems.push_back({path, problem});
        });
  }

  bool Open(const std::string& fixture) {
    return unpacker.OpenArchive(platform::ToLibraryPath(RarFixture(fixture)));
  }
  bool OpenBytes(const std::string& archive) {
    WriteFile(folder.Path("x.rar"), archive);
    return unpacker.OpenArchive(folder.LibraryPath("x.rar"));
  }
  bool Build(const std::vector<RarItem>& items) {
    RarBuilder builder;
    for (const RarItem& item : items) builder.Add(item);
    return OpenBytes(builder.Build());
  }

  std::vector<std::wstring> Paths() {
    std::vector<std::wstring> paths;
    WalkItems<RARFILEFULLINFO>(unpacker, [&](const RARFILEFULLINFO& info) {
      paths.push_back(info.strPath);
      return true;
    });
    return paths;
  }
  std::wstring Target() const { return folder.LibraryPath("out"); }
  std::map<std::string, std::string> Out() const { return TreeOf(folder.Path("out")); }
  bool Unpack() { return unpacker.UnpackArchive(Target()); }

  TempFolder folder;
  FakeHost host;
  TestedRarUnpacker unpacker;
  std::vector<std::pair<std::wstring, RarProblem>> problems;
};

}  // namespace testsupport
