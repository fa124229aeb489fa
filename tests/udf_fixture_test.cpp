// Pure UDF images that mkudffs made and the kernel filled, and bridge images
// of genisoimage: what others record must come out as it went in.
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
    const std::string command =
        "xz -dc " MORVUNP_FIXTURES "/udf/udf-" + size + ".img.xz > " + folder.Path("x.img");
    ASSERT_EQ(system(command.c_str()), 0) << command;
    CIsoUnpacker unpacker;
    ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.img"))) << size;
    EXPECT_TRUE(unpacker.IsListComplete());
    EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("out"))) << size;
    EXPECT_EQ(TreeOf(folder.Path("out")), ExpectedTree()) << size;
    struct stat status {};
    ASSERT_EQ(stat(folder.Path("out/hole.bin").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks, 40) << "the hole stays one";
  }
}

TEST(UdfBridge, ComesOutWithItsUdfNames) {
  const TempFolder folder;
  WriteFile(folder.Path("tree/Docs and more/a long name.txt"), "a");
  WriteFile(folder.Path("tree/big.bin"), std::string(700000, '\3'));
  WriteFile(folder.Path("tree/\u00fcber.txt"), "u");
  const std::string command = "genisoimage -quiet -udf -input-charset utf-8 -o " +
                              folder.Path("x.iso") + " " + folder.Path("tree");
  ASSERT_EQ(system(command.c_str()), 0);
  CIsoUnpacker unpacker;
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.iso")));
  EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("out")));
  EXPECT_EQ(TreeOf(folder.Path("out")), TreeOf(folder.Path("tree")));
}

// Unpacking it would write 4 GiB; the distance is covered by the images of
// udf_extract_test.cpp, whose holes cost nothing.
TEST(UdfBridge, ListsAFileOfMoreThan4GiB) {
  const TempFolder folder;
  mkdir(folder.Path("tree").c_str(), 0777);
  const std::string commands = "cd " + folder.Path() +
                               " && truncate -s 4300000000 tree/huge.bin"
                               " && genisoimage -quiet -udf -allow-limited-size -o - tree |"
                               " cp --sparse=always /dev/stdin x.iso";
  ASSERT_EQ(system(commands.c_str()), 0);
  CIsoUnpacker unpacker;
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.iso")));
  ISOFILEFULLINFO info;
  ASSERT_TRUE(unpacker.LocateFile(L"huge.bin") && unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.nSize64, 4300000000U);
  EXPECT_EQ(info.nPackedSize, 4300001280U) << "whole blocks";
}

}  // namespace
