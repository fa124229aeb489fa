// The fuzz targets. Each takes any bytes, does with them what a host would do
// with an archive made of them, and ends the process when a promise is broken.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

struct Target {
  const char* name;
  void (*run)(std::string_view input);
  /// Inputs to begin with.
  std::vector<std::string> (*seeds)();
};

void RunIso(std::string_view input);
std::vector<std::string> IsoSeeds();
void RunUdf(std::string_view input);
std::vector<std::string> UdfSeeds();
void RunCabinetModule(std::string_view input);
void RunCabinet(std::string_view input);
std::vector<std::string> CabinetSeeds();
void RunSplitSet(std::string_view input);
std::vector<std::string> SplitSetSeeds();
void RunText(std::string_view input);
std::vector<std::string> TextSeeds();

inline constexpr std::array<Target, 6> kTargets{{
    {"iso", RunIso, IsoSeeds},
    {"udf", RunUdf, UdfSeeds},
    {"cabmodule", RunCabinetModule, CabinetSeeds},
    {"cabinet", RunCabinet, CabinetSeeds},
    {"splitset", RunSplitSet, SplitSetSeeds},
    {"text", RunText, TextSeeds},
}};

/// The inputs of a target to begin with, each also with the bit set that asks for
/// what goes beyond the contract; for other targets it is one more input.
inline std::vector<std::string> SeedsOf(const Target& target) {
  constexpr char kAsksForMore = 0x40;
  std::vector<std::string> seeds = target.seeds();
  for (std::size_t i = 0, count = seeds.size(); i < count; ++i) {
    if (seeds[i].empty()) continue;
    seeds.push_back(seeds[i]);
    seeds.back()[0] = static_cast<char>(seeds.back()[0] ^ kAsksForMore);
  }
  return seeds;
}

}  // namespace fuzz
