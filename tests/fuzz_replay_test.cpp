// What the fuzzers begin with and what they have found, once through each
// target. A target ends the process when a promise is broken.
#include <gtest/gtest.h>

#include <filesystem>

#include "fuzz/target.h"
#include "support/tempfolder.h"

namespace {

class FuzzReplay : public testing::TestWithParam<fuzz::Target> {};

TEST_P(FuzzReplay, PassesSeedsAndFindings) {
  const fuzz::Target& target = GetParam();
  for (const std::string& seed : SeedsOf(target)) {
    target.run(seed);
    // A third and a half of it: most damage is an early end.
    target.run(std::string_view(seed).substr(0, seed.size() / 3));
    target.run(std::string_view(seed).substr(0, seed.size() / 2));
  }
  const std::filesystem::path findings(std::string(MORVUNP_FIXTURES "/fuzz/") + target.name);
  if (!exists(findings)) return;
  for (const auto& finding : std::filesystem::directory_iterator(findings)) {
    SCOPED_TRACE(finding.path().filename());
    target.run(testsupport::ReadFile(finding.path().string()));
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, testing::ValuesIn(fuzz::kTargets),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
