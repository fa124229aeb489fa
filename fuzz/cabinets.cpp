// Cabinets through CCabUnpacker, and the inputs that the module below it is
// given too: sets of up to three.
#include "fuzz/cabinetset.h"
#include "fuzz/target.h"
#include "fuzz/unpackall.h"
#include "tests/support/cabbuilder.h"

namespace fuzz {
namespace {

using testsupport::CabBuilder;
using testsupport::CabFile;
using testsupport::CabMethod;
using testsupport::LzxBlocks;
using testsupport::LzxSettings;

std::string SeedOf(const std::vector<std::string>& cabinets) {
  std::string seed = Manner::OfSeeds();
  for (const std::string& cabinet : cabinets) seed += CountedBytes(cabinet);
  return seed;
}

/// Long texts are of the kind that packs to little.
std::vector<CabFile> Files(std::size_t length) {
  std::string text;
  for (int i = 0; text.size() < length; ++i) text += std::to_string(i % 19 * (i % 17)) + " ";
  return {{"A.TXT", "short"},
          {"D\\LONG.TXT", text},
          {"LINK\\PLANTED.TXT", "!", 0x21},
          {"..\\PLANTED.TXT", "!"},
          {"E\\", ""}};
}

/// Without checksums, so that changes come through.
CabBuilder Builder(CabMethod method, const LzxSettings& lzx = {}) {
  CabBuilder builder;
  builder.hasChecksums = false;
  builder.Add(method, Files(method == CabMethod::kStored ? 1500 : 70'000), lzx);
  return builder;
}

}  // namespace

std::vector<std::string_view> CabinetsOf(Input& input) {
  constexpr std::size_t kMostCabinets = 3;
  std::vector<std::string_view> cabinets;
  while (cabinets.size() < kMostCabinets && !input.IsEmpty()) cabinets.push_back(input.Counted());
  return cabinets;
}

void RunCabinet(std::string_view bytes) {
  Input input(bytes);
  const Manner manner(input);
  Sandbox& sandbox = Sandbox::Instance();
  sandbox.Clear();
  std::vector<std::wstring> paths;
  for (const std::string_view cabinet : CabinetsOf(input)) {
    paths.push_back(sandbox.Put(std::to_string(paths.size() + 1) + ".cab", cabinet));
  }
  if (!paths.empty()) UnpackAllCleanly<CCabUnpacker>(manner, paths.front());
}

std::vector<std::string> CabinetSeeds() {
  const LzxSettings calls{17, {LzxBlocks::kVerbatim}, 20'000, 100'000};
  const LzxSettings raw{15, {LzxBlocks::kUncompressed}, 999, 0};
  const LzxSettings aligned{21, {LzxBlocks::kAligned}, 50'001, 0};
  CabBuilder reserves = Builder(CabMethod::kStored);
  reserves.headerReserve = 5;
  reserves.folderReserve = 2;
  reserves.blockReserve = 3;
  reserves.hasChecksums = true;
  CabBuilder unpacked = Builder(CabMethod::kStored);
  unpacked.folders.front() = {CabMethod::kLzx, Files(1500), raw};
  CabBuilder quantum = Builder(CabMethod::kStored);
  std::string quantumBytes = quantum.Build();
  // The folder's method, level 4 and a window of 16 bits.
  quantumBytes.replace(36 + 6, 2, "\x42\x10");
  return {SeedOf({Builder(CabMethod::kMszip).Build()}),
          SeedOf({Builder(CabMethod::kLzx, calls).Build()}),
          SeedOf({unpacked.Build()}),
          SeedOf({Builder(CabMethod::kLzx, aligned).Build()}),
          SeedOf({reserves.Build()}),
          SeedOf({quantumBytes}),
          SeedOf(Builder(CabMethod::kStored).BuildSet(600, {"1.cab", "2.cab", "3.cab"})),
          SeedOf(Builder(CabMethod::kMszip).BuildSet(700, {"1.cab", "2.cab", "3.cab"}))};
}

}  // namespace fuzz
