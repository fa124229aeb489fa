// What the tests of disc images start from: an image, built byte by byte, and
// an unpacker for it.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <string>
#include <vector>

#include "morvunp/morvunp.h"
#include "support/fakehost.h"
#include "support/tempfolder.h"

namespace testsupport {

/// Paths of all items, by a walk.
inline std::vector<std::wstring> PathsOf(CIsoUnpacker& unpacker) {
  std::vector<std::wstring> paths;
  WalkItems<ISOFILESHORTINFO>(unpacker, [&](const ISOFILESHORTINFO& info) {
    paths.push_back(info.strPath);
    return true;
  });
  return paths;
}

template <class Builder>
class ImageTest : public testing::Test {
 protected:
  bool Open(const std::string& image) {
    WriteFile(folder.Path("x.iso"), image);
    return unpacker.OpenArchive(folder.LibraryPath("x.iso"));
  }
  bool Open() { return Open(builder.Build()); }

  ISOFILEFULLINFO InfoOf(const std::wstring& path) {
    ISOFILEFULLINFO info;
    EXPECT_TRUE(unpacker.LocateFile(path) && unpacker.GetFileFullInfo(info));
    return info;
  }

  TempFolder folder;
  Builder builder;
  CIsoUnpacker unpacker;
};

/// With a host and an empty target folder.
template <class Builder>
class ImageExtractTest : public ImageTest<Builder> {
 protected:
  void SetUp() override {
    mkdir(this->folder.Path("out").c_str(), 0777);
    host.Attach(this->unpacker);
  }

  std::map<std::string, std::string> Out() const { return TreeOf(this->folder.Path("out")); }
  std::string Out(const std::string& name) const {
    return ReadFile(this->folder.Path("out/" + name));
  }
  std::wstring Target() const { return this->folder.LibraryPath("out"); }

  FakeHost host;
};

}  // namespace testsupport
