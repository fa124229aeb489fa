// What a build without the RAR engine says of RAR archives.
#include <gmock/gmock.h>

#include "support/command.h"
#include "support/rarbuilder.h"
#include "support/tempfolder.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testsupport::RunCommand;

TEST(WithoutRar, NamesTheEngineThatIsMissing) {
  const testsupport::TempFolder folder;
  const auto listed = [&](const std::string& content) {
    testsupport::WriteFile(folder.Path("a"), content);
    return RunCommand({"list", folder.Path("a")});
  };
  testsupport::RarBuilder builder;
  builder.Add({.path = "A.TXT", .data = "a"});
  const auto rar = listed(builder.Build());
  EXPECT_EQ(rar.exitCode, 2);
  EXPECT_THAT(rar.errors, HasSubstr("a RAR archive, but morvunp was built without the RAR engine"));
  const auto other = listed("no archive at all");
  EXPECT_EQ(other.exitCode, 2);
  EXPECT_THAT(other.errors, Not(HasSubstr("RAR")));
}

}  // namespace
