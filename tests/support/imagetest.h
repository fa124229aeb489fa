// What the tests of both kinds of disc images start from.
#pragma once

#include <filesystem>

#include "support/isobuilder.h"
#include "support/udfbuilder.h"
#include "support/unpacktest.h"

namespace testsupport {

template <class Builder>
class ImageTest : public UnpackTest<CIsoUnpacker> {
 protected:
  bool OpenImage() { return OpenBytes(builder.Build()); }
  /// With 100 MiB of nothing behind it.
  bool OpenSparseImage() {
    WriteFile(folder.Path("x"), builder.Build());
    std::filesystem::resize_file(folder.Path("x"), 100 << 20);
    return Open();
  }
  ISOFILEFULLINFO InfoOf(const std::wstring& path) {
    ISOFILEFULLINFO info;
    EXPECT_TRUE(unpacker.LocateFile(path) && unpacker.GetFileFullInfo(info));
    return info;
  }

  Builder builder;
};

}  // namespace testsupport
