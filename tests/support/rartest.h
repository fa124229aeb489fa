// What the tests of RAR archives start from.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/text.h"
#include "support/rarbuilder.h"
#include "support/unpacktest.h"

namespace testsupport {

inline std::string RarFixture(const std::string& name) {
  return std::string(MORVUNP_FIXTURES "/rar/") + name;
}

/// Lets a test set and see what only the class itself can.
class TestedRarUnpacker : public CRarUnpacker {
 public:
  using CRarUnpacker::CallbackProc;
  using CRarUnpacker::LocateFile;
  using CRarUnpacker::m_bReusePassword;
};

class RarTest : public UnpackTest<TestedRarUnpacker> {
 protected:
  RarTest() {
    unpacker.SetProblemReport(
        [this](const std::wstring& path, RarProblem problem, const std::wstring& volume) {
          problems.push_back({path, problem});
          missing = volume;
        });
  }

  bool OpenFixture(const std::string& name) {
    return unpacker.OpenArchive(platform::ToLibraryPath(RarFixture(name)));
  }
  /// Of a set of four volumes.
  bool OpenFirstTwoVolumes() {
    for (const char* part : {"set.part1.rar", "set.part2.rar"}) {
      WriteFile(folder.Path(part), ReadFile(RarFixture(part)));
    }
    return Open("set.part1.rar");
  }
  bool OpenBuilt(const std::vector<RarItem>& items) {
    RarBuilder builder;
    for (const RarItem& item : items) builder.Add(item);
    return OpenBytes(builder.Build());
  }

  std::vector<std::pair<std::wstring, RarProblem>> problems;
  std::wstring missing;
};

}  // namespace testsupport
