// Disc images through CIsoUnpacker. Both file systems are looked for in each
// image; the targets differ in where they begin, and in that the sums of UDF
// are put right.
#include "fuzz/sparseimage.h"
#include "fuzz/target.h"
#include "fuzz/unpackall.h"
#include "tests/support/bytes.h"
#include "tests/support/isobuilder.h"
#include "tests/support/udfbuilder.h"

namespace fuzz {
namespace {

using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::Little;
using testsupport::Put;
using testsupport::UdfBuilder;
using testsupport::UdfNode;

void Run(std::string_view bytes, Sums sums) {
  Input input(bytes);
  const Manner manner(input);
  Sandbox& sandbox = Sandbox::Instance();
  sandbox.Clear();
  UnpackAllCleanly<CIsoUnpacker>(manner, sandbox.Put("x", ExpandImage(input.Rest(), sums)));
}

std::string SeedOf(const std::string& image) { return Manner::OfSeeds() + CompactImage(image); }

template <class Node>
void AddTree(Node& root) {
  root.AddFolder("LINK").AddFile("PLANTED.TXT", "!");
  Node& folder = root.AddFolder("DOCS");
  folder.AddFile("A.TXT", std::string(3000, 'a')).hidden = true;
  folder.AddFolder("SUB").AddFile("..", "!");
  root.AddFolder("EMPTY");
  root.AddFile("DOCS", "a file where a folder is");
  root.AddFile("TOP.TXT;1", "top");
}

}  // namespace

void RunIso(std::string_view bytes) { Run(bytes, Sums::kLeave); }

void RunUdf(std::string_view bytes) { Run(bytes, Sums::kPutRight); }

std::vector<std::string> IsoSeeds() {
  std::vector<std::string> seeds;
  for (const std::uint32_t blockSize : {512U, 1024U, 2048U}) {
    IsoBuilder builder(blockSize);
    AddTree(builder.Root());
    seeds.push_back(SeedOf(builder.Build()));
  }
  IsoBuilder odd;
  IsoNode& folder = odd.Root().AddFolder("D");
  const IsoNode& late = folder.AddFile("LATE", "late");
  const IsoNode& many = folder.AddFile("MANY", "many");
  const IsoNode& loop = folder.AddFolder("LOOP");
  std::string image = odd.Build();
  ++image[odd.RecordOffsetOf(late) + 1];          // behind an extended attribute record
  image[odd.RecordOffsetOf(many) + 25] = '\x80';  // in many extents
  Put(image, odd.LinkOffsetOf(loop), Little(odd.LocationOf(odd.Root()), 4));
  seeds.push_back(SeedOf(image));
  return seeds;
}

std::vector<std::string> UdfSeeds() {
  std::vector<std::string> seeds;
  for (const std::uint32_t sectorSize : {512U, 2048U}) {
    UdfBuilder builder(sectorSize);
    AddTree(builder.Root());
    builder.Root().AddFile("in", "embedded").allocation = testsupport::kUdfEmbedded;
    UdfNode& pieces = builder.Root().AddFile("pieces", std::string(3 * sectorSize, 'p'));
    pieces.allocation = testsupport::kUdfLong;
    pieces.fragments = 3;
    seeds.push_back(SeedOf(builder.Build()));
  }
  UdfBuilder odd;
  UdfNode& hole = odd.Root().AddFile("hole", "");
  hole.informationLength = 5000;
  hole.extents = {{testsupport::kUdfNotAllocated | 4096, 0, 0},
                  {testsupport::kUdfContinuation | 2048, 1, 0}};
  UdfBuilder second;
  second.Root().AddFile("second", "2").identifier = "\20second";
  seeds.push_back(SeedOf(second.Build(odd.Build())));
  return seeds;
}

}  // namespace fuzz
