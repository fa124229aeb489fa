// Writes the inputs that each target begins with: FOLDER/TARGET/NUMBER.
#include <cstdio>

#include "fuzz/target.h"
#include "tests/support/tempfolder.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: morvunp_fuzz_seeds FOLDER\n", stderr);
    return 2;
  }
  for (const fuzz::Target& target : fuzz::kTargets) {
    int number = 0;
    for (const std::string& seed : fuzz::SeedsOf(target)) {
      testsupport::WriteFile(
          std::string(argv[1]) + "/" + target.name + "/" + std::to_string(number++), seed);
    }
  }
}
