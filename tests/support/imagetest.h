// What the tests of both kinds of disc images start from.
#pragma once

#include "support/isobuilder.h"
#include "support/udfbuilder.h"
#include "support/unpacktest.h"

namespace testsupport {

template <class Builder>
class ImageTest : public UnpackTest<CIsoUnpacker> {
 protected:
  bool OpenImage() { return OpenBytes(builder.Build()); }
  ISOFILEFULLINFO InfoOf(const std::wstring& path) {
    ISOFILEFULLINFO info;
    EXPECT_TRUE(unpacker.LocateFile(path) && unpacker.GetFileFullInfo(info));
    return info;
  }

  Builder builder;
};

}  // namespace testsupport
