// All formats, for what they do alike: each with its class and what makes its
// archives.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "morvunp/morvunp.h"
#include "support/archives.h"

namespace testsupport {

template <class U, void (*write)(const std::string&, const Items&)>
struct Format {
  using Unpacker = U;
  static constexpr auto kWrite = write;
};

using Formats = testing::Types<Format<CIsoUnpacker, WriteIso>, Format<CIsoUnpacker, WriteUdf>,
                               Format<CCabUnpacker, WriteCabinet>, Format<C7zUnpacker, Write7z>
#if MORVUNP_HAS_RAR
                               ,
                               Format<CRarUnpacker, WriteRar>
#endif
                               >;

struct FormatNames {
  template <class>
  static std::string GetName(int index) {
    return std::vector{"Iso", "Udf", "Cabinet", "SevenZip", "Rar"}.at(
        static_cast<std::size_t>(index));
  }
};

}  // namespace testsupport
