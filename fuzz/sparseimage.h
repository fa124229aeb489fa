// Disc images as inputs. An image is mostly zeros, which a fuzzer would waste
// its time on, so an input lists only the pieces that are not.
#pragma once

#include <string>
#include <string_view>

namespace fuzz {

/// What happens to the sum in whatever looks like a descriptor tag of ECMA-167
/// (3/7.2.3). A fuzzer would hardly find the right one.
enum class Sums { kLeave, kPutRight };

/// The image that pieces make: each is the number of a block of 512 bytes (two
/// bytes), a count (two bytes) and so many bytes.
std::string ExpandImage(std::string_view pieces, Sums sums);
/// The pieces of an image, but for what fills its blocks up: bytes that a block
/// ends with again and again become zeros.
std::string CompactImage(std::string_view image);

}  // namespace fuzz
