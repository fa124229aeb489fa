// Pure UDF images that mkudffs made and the kernel filled, and ISO 9660 and
// bridge images of tools: what others record must come out as it went in.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "morvunp/morvunp.h"
#include "support/tempfolder.h"

namespace {

using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

std::map<std::string, std::string> ExpectedTree() {
  std::string numbers;
  for (int i = 1; i <= 2000; ++i) numbers += std::to_string(i) + "\n";
  return {{"docs/", ""},
          {"docs/deep/", ""},
          {"docs/deep/nothing", ""},
          {"docs/deep/zeros.bin", std::string(5, '\0')},
          {"docs/na\u00efve \u540d\u524d \U0001F600.txt", "\u00e9"},
          {"docs/numbers.txt", numbers},
          {"empty/", ""},
          {"hello.txt", "hello\n"},
          {"hole.bin", std::string(40000, '\0') + "end"}};
}

TEST(UdfFixtures, ComeOutAsTheKernelWroteThem) {
  for (const std::string size : {"512", "1024", "2048"}) {
    const TempFolder folder;
    const std::string command = "xz -dc '" MORVUNP_FIXTURES "/udf/udf-" + size + ".img.xz' > '" +
                                folder.Path("x.img") + "'";
    ASSERT_EQ(system(command.c_str()), 0) << command;
    CIsoUnpacker unpacker;
    ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.img"))) << size;
    EXPECT_TRUE(unpacker.IsListComplete());
    EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("out"))) << size;
    EXPECT_EQ(TreeOf(folder.Path("out")), ExpectedTree()) << size;
  }
}

TEST(ToolImages, ComeOutAsTheyWentIn) {
  const std::pair<std::string, const char*> cases[] = {
      {"genisoimage -quiet -iso-level 1 -J -R", "MORE.TXT"},
      {"xorriso -report_about SORRY -as mkisofs -iso-level 3 -J -r", "MORE.TXT"},
      {"genisoimage -quiet -udf -input-charset utf-8", "Docs and more/a long n\u00e4me.txt"}};
  for (const auto& [tool, name] : cases) {
    const TempFolder folder;
    WriteFile(folder.Path("tree/DOCS/DEEP/ER/DATA.BIN"), std::string(700000, '\7'));
    WriteFile(folder.Path("tree/EMPTY.TXT"), "");
    WriteFile(folder.Path("tree/" + std::string(name)), "more");
    mkdir(folder.Path("tree/NOTHING").c_str(), 0777);
    const std::string command =
        tool + " -o '" + folder.Path("x.iso") + "' '" + folder.Path("tree") + "'";
    ASSERT_EQ(system(command.c_str()), 0) << command;
    CIsoUnpacker unpacker;
    ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.iso"))) << tool;
    EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("out"))) << tool;
    EXPECT_EQ(TreeOf(folder.Path("out")), TreeOf(folder.Path("tree"))) << tool;
  }
}

}  // namespace
