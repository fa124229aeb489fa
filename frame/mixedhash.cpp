#include "frame/mixedhash.h"

#include <chrono>
#include <exception>
#include <random>

namespace frame {
namespace {

ULONGLONG MakeSeed() noexcept {
  // Where the system has no random numbers to give, its layout of memory and
  // the time have to do.
  static const char place = 0;
  auto seed = static_cast<ULONGLONG>(reinterpret_cast<std::uintptr_t>(&place));
  seed ^= static_cast<ULONGLONG>(std::chrono::steady_clock::now().time_since_epoch().count()) << 20;
  try {
    std::random_device device;
    seed ^= ULONGLONG{device()} << 32 | device();
  } catch (const std::exception&) {
  }
  return seed;
}

}  // namespace

std::size_t MixedHash::operator()(ULONGLONG number) const noexcept {
  static const ULONGLONG seed = MakeSeed();
  // The finalizer of SplitMix64: every bit of the sum reaches every bit.
  ULONGLONG mixed = number + seed;
  mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
  mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
  return static_cast<std::size_t>(mixed ^ mixed >> 31);
}

}  // namespace frame
