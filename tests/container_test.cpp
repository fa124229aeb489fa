// Where the system does not open a path below a folder with one call, as old
// kernels and the filters of older containers do not: folders are entered one
// by one, and nothing else changes.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "morvunp/morvunp.h"
#include "support/archives.h"
#include "support/command.h"
#include "support/tempfolder.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

struct Format {
  std::string name;
  void (*write)(const std::string&, const testsupport::Items&);
};

std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }

class Container : public testing::TestWithParam<Format> {};

TEST_P(Container, NothingIsWrittenThroughLinks) {
  const TempFolder folder;
  WriteFile(folder.Path("outside/PLANTED"), "untouched");
  WriteFile(folder.Path("out/OLD/F"), "old");
  ASSERT_EQ(symlink("../outside", folder.Path("out/LINK").c_str()), 0);
  ASSERT_EQ(symlink("../../outside", folder.Path("out/OLD/LINK").c_str()), 0);
  GetParam().write(folder.Path("x"), {{"LINK/PLANTED", "evil"},
                                      {"LINK/SUB/X", "evil"},
                                      {"NEW/A/B/F", "deep"},
                                      {"OLD/F", "new"},
                                      {"OLD/LINK/PLANTED", "evil"},
                                      {"TOP", "top"}});
  const testsupport::Result result =
      RunCommand({"extract", folder.Path("x"), "-C", folder.Path("out"), "--overwrite=all"}, {},
                 testsupport::Process::kWithoutOpenat2);
  if (result.exitCode == testsupport::kNoSuchProcess) GTEST_SKIP() << "no filters here";
  EXPECT_EQ(result.exitCode, 1);
  for (const char* path : {"LINK/PLANTED", "LINK/SUB/X", "OLD/LINK/PLANTED"}) {
    EXPECT_THAT(result.errors, testing::HasSubstr(path));
  }
  EXPECT_THAT(TreeOf(folder.Path("outside")), ElementsAre(Pair("PLANTED", "untouched")));
  EXPECT_THAT(
      TreeOf(folder.Path("out")),
      ElementsAre(Pair("LINK@", "../outside"), Pair("NEW/", ""), Pair("NEW/A/", ""),
                  Pair("NEW/A/B/", ""), Pair("NEW/A/B/F", "deep"), Pair("OLD/", ""),
                  Pair("OLD/F", "new"), Pair("OLD/LINK@", "../../outside"), Pair("TOP", "top")));
}

const Format kFormats[] = {{"Iso", testsupport::WriteIso},
                           {"Udf", testsupport::WriteUdf},
                           {"Cabinet", testsupport::WriteCabinet},
#if MORVUNP_HAS_RAR
                           {"Rar", testsupport::WriteRar},
#endif
                           {"SevenZip", testsupport::Write7z}};

INSTANTIATE_TEST_SUITE_P(Formats, Container, testing::ValuesIn(kFormats),
                         [](const auto& test) { return test.param.name; });

}  // namespace
