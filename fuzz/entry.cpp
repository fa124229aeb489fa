// Where libFuzzer calls the target that the program was built for.
#include <algorithm>
#include <clocale>
#include <cstring>

#include "fuzz/target.h"
#include "morvunp/platform/platform.h"

namespace {

const fuzz::Target& TargetOfProgram() {
  const auto isOurs = [](const fuzz::Target& target) {
    return std::strcmp(target.name, MORVUNP_FUZZ_TARGET) == 0;
  };
  return *std::find_if(fuzz::kTargets.begin(), fuzz::kTargets.end(), isOurs);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::setlocale(LC_ALL, "C.UTF-8");
  // Held, so that the module stays where its coverage is counted.
  LoadLibraryW(L"Cabinet.dll");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const fuzz::Target& target = TargetOfProgram();
  target.run({reinterpret_cast<const char*>(data), size});
  return 0;
}
