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

}  // namespace fuzz
