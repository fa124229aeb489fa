// The cabinet decompression interface as its callers see it: loaded by name,
// every byte and file going through the callbacks. fuzz/cabmodule.cpp looks at
// what is freed and closed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

#include "morvunp/platform/platform.h"
#include "support/cabbuilder.h"

namespace {

using testsupport::CabBuilder;
using testsupport::CabFile;
using testsupport::CabMethod;
using testsupport::LzxBlocks;
using testsupport::LzxSettings;

/// A caller whose files are texts. The callbacks carry no context, so all of it
/// is static; a fixture empties it.
struct Caller {
  struct File {
    std::string name;
    std::size_t position = 0;
  };

  std::map<std::string, std::string> disk;
  std::map<std::string, std::string> output;
  std::map<INT_PTR, File> open;
  INT_PTR lastHandle = 100;
  std::set<std::string> unwanted;
  /// What was notified and opened, one word each.
  std::string log;
  FDINOTIFICATION closed;
};

Caller caller;

void* Alloc(ULONGLONG size) { return ::operator new(size); }
void Free(void* memory) { ::operator delete(memory); }
INT_PTR OpenFile(const char* name) {
  caller.open[++caller.lastHandle] = {name};
  return caller.lastHandle;
}
INT_PTR Open(char* path, int flags, int mode) {
  EXPECT_EQ(flags, 0x8000);
  EXPECT_EQ(mode, 0x180);
  caller.log += std::string("open:") + path + " ";
  return caller.disk.contains(path) ? OpenFile(path) : -1;
}
UINT Read(INT_PTR handle, void* buffer, UINT count) {
  Caller::File& file = caller.open.at(handle);
  const std::string& bytes = caller.disk.at(file.name);
  const std::size_t start = std::min(file.position, bytes.size());
  const std::size_t length = bytes.copy(static_cast<char*>(buffer), count, start);
  file.position += length;
  return static_cast<UINT>(length);
}
UINT Write(INT_PTR handle, void* buffer, UINT count) {
  EXPECT_LE(count, 32768U);
  caller.output[caller.open.at(handle).name].append(static_cast<char*>(buffer), count);
  return count;
}
int Close(INT_PTR handle) {
  EXPECT_EQ(caller.open.erase(handle), 1U);
  return 0;
}
LONG Seek(INT_PTR handle, LONG distance, int origin) {
  EXPECT_EQ(origin, SEEK_SET);
  caller.open.at(handle).position = static_cast<std::size_t>(distance);
  return distance;
}

INT_PTR Notify(FDINOTIFICATIONTYPE type, FDINOTIFICATION* about) {
  EXPECT_EQ(about->pv, &caller);
  static const char* const kNames[] = {
      "INFO", "PARTIAL:", "COPY:", "CLOSE:", "NEXT:", "ENUMERATE:"};
  caller.log += kNames[type];
  if (type == fdintENUMERATE) {
    caller.log += std::to_string(about->iFolder);
  } else if (type != fdintCABINET_INFO) {
    caller.log += about->psz1;
  }
  caller.log += " ";
  // Where there is no cabinet, this caller names another folder.
  const bool isNoCabinet = type == fdintNEXT_CABINET && about->fdie == FDIERROR_NOT_A_CABINET;
  if (isNoCabinet) std::memcpy(about->psz3, "e:\\", 4);
  if (type == fdintCLOSE_FILE_INFO) {
    caller.closed = *about;
    return Close(about->hf) == 0 ? TRUE : FALSE;
  }
  if (type != fdintCOPY_FILE || caller.unwanted.contains(about->psz1)) return 0;
  caller.output[about->psz1];
  return OpenFile(about->psz1);
}

class CabModule : public testing::Test {
 protected:
  void SetUp() override {
    caller = {};
    module = LoadLibraryW(L"Cabinet.dll");
    ASSERT_NE(module, nullptr);
    hfdi = Entry<PFNFDICREATE>("FDICreate")(Alloc, Free, Open, Read, Write, Close, Seek, cpuUNKNOWN,
                                            &erf);
    ASSERT_NE(hfdi, nullptr);
  }
  void TearDown() override {
    EXPECT_TRUE(caller.open.empty()) << "files left open";
    EXPECT_TRUE(Entry<PFNFDIDESTROY>("FDIDestroy")(hfdi));
    FreeLibrary(module);
  }

  template <class Function>
  Function Entry(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
  }
  BOOL Copy(std::string name) {
    caller.log.clear();
    caller.output.clear();
    std::string folder = "d:\\";
    return Entry<PFNFDICOPY>("FDICopy")(hfdi, name.data(), folder.data(), 0, Notify, nullptr,
                                        &caller);
  }
  BOOL CopyBytes(const std::string& cabinet) {
    caller.disk["d:\\x.cab"] = cabinet;
    return Copy("x.cab");
  }

  HMODULE module = nullptr;
  HFDI hfdi = nullptr;
  ERF erf;
};

/// Text with repetitions near, far and from where the last ones came, mostly
/// short; calls of x86 and stretches of noise.
std::string Sample(std::size_t size) {
  std::string text;
  std::uint32_t state = 12345;
  std::size_t distances[3] = {1, 1, 1};
  while (text.size() < size) {
    state = state * 1664525 + 1013904223;
    if (state % 3 != 0) {
      std::size_t& back = distances[(state >> 9) % 3];
      if (state % 5 != 0) back = (state >> 8) % 60'000 + 1;
      const std::size_t length = (state >> 24 >> (state >> 8) % 7) + 2;
      for (std::size_t i = 0; back < text.size() && i < length; ++i) {
        text += text[text.size() - back];
      }
    } else if (state % 5 == 0) {
      text += "\xE8" + std::string(3, static_cast<char>(state >> 16)) + '\0';
    } else {
      for (int i = 0; i < 6; ++i) text += static_cast<char>('a' + (state >> 4 * i) % 20);
    }
  }
  text.resize(size);
  return text;
}

TEST_F(CabModule, UnpacksEveryMethodAndShapeOfStream) {
  std::vector<std::pair<CabMethod, LzxSettings>> cases{{CabMethod::kStored, {}},
                                                       {CabMethod::kMszip, {}}};
  const std::vector<LzxBlocks> kinds{LzxBlocks::kVerbatim, LzxBlocks::kAligned,
                                     LzxBlocks::kUncompressed, LzxBlocks::kUncompressed};
  // Odd sizes leave the words of what follows at odd places.
  for (const std::size_t blockSize : {32'768U, 50'001U, 9'999U, 200'000U}) {
    cases.push_back({CabMethod::kLzx, {15, kinds, blockSize}});
    cases.push_back({CabMethod::kLzx, {21, kinds, blockSize, 170'000, true}});
  }
  const std::string text = Sample(450'000);
  for (const auto& [method, lzx] : cases) {
    SCOPED_TRACE(testing::Message() << "method " << int(method) << ", blocks of " << lzx.blockSize
                                    << ", window of 2^" << lzx.windowBits);
    CabBuilder builder;
    builder.Add(method, {{"a", text.substr(0, 3)}, {"b", text.substr(3)}, {"empty", ""}}, lzx)
        .Add(CabMethod::kStored, {{"c", "x"}});
    builder.headerReserve = 6144;
    builder.folderReserve = 5;
    builder.blockReserve = 7;
    builder.sumsReserve = lzx.translationSize == 0;
    ASSERT_TRUE(CopyBytes(builder.Build())) << erf.erfOper;
    EXPECT_TRUE(caller.output["a"] == text.substr(0, 3) && caller.output["b"] == text.substr(3));
    EXPECT_TRUE(caller.output.contains("empty"));
    EXPECT_EQ(caller.output["c"], "x");
  }
}

TEST_F(CabModule, NotifiesInThePublishedOrder) {
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", "1", _A_EXEC | 0x21}, {"B", "2"}});
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.log,
            "open:d:\\x.cab INFO ENUMERATE:2 COPY:A open:d:\\x.cab CLOSE:A COPY:B CLOSE:B "
            "ENUMERATE:0 ");
  caller.unwanted = {"B"};
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.closed.date, CabFile{}.date);
  EXPECT_EQ(caller.closed.time, CabFile{}.time);
  EXPECT_EQ(caller.closed.attribs, 0x21) << "the executable bit moves to cb";
  EXPECT_EQ(caller.closed.cb, 1);
  caller.unwanted = {"A", "B"};
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.log, "open:d:\\x.cab INFO ENUMERATE:2 COPY:A COPY:B ENUMERATE:0 ")
      << "what is skipped is not even opened";
}

class CabModuleSet : public CabModule {
 protected:
  /// A is whole in the first of three cabinets, B and C reach into later ones,
  /// D lies in the last.
  void Make(CabMethod method = CabMethod::kStored, std::size_t packedBytes = 110'000,
            const std::vector<std::string>& names = {"1.cab", "2.cab", "3.cab"}) {
    CabBuilder builder;
    builder.Add(method, {{"A", text.substr(0, 1000)},
                         {"B", text.substr(1000, 150'000)},
                         {"C", text.substr(151'000, 120'000)},
                         {"D", text.substr(271'000)}});
    const auto cabinets = builder.BuildSet(packedBytes, names);
    ASSERT_EQ(cabinets.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) caller.disk["d:\\" + names[i]] = cabinets[i];
  }

  const std::string text = Sample(300'000);
};

TEST_F(CabModuleSet, JoinsBlocksThatAreCutBetweenCabinets) {
  for (const auto& [method, packedBytes] : {std::pair(CabMethod::kStored, 110'000U),
                                            {CabMethod::kMszip, 24'000U},
                                            {CabMethod::kLzx, 29'000U}}) {
    Make(method, packedBytes);
    ASSERT_TRUE(Copy("1.cab")) << erf.erfOper;
    EXPECT_TRUE(caller.output["A"] + caller.output["B"] == text.substr(0, 151'000));
    EXPECT_FALSE(caller.output.contains("D")) << "D begins in a later cabinet";
    // The folder of the last cabinet begins in the first.
    ASSERT_TRUE(Copy("3.cab")) << erf.erfOper;
    EXPECT_TRUE(caller.output.size() == 1 && caller.output["D"] == text.substr(271'000));
  }
}

TEST_F(CabModuleSet, AsksForTheNextCabinetWhenItsDataIsNeeded) {
  Make();
  caller.unwanted = {"B", "C"};
  ASSERT_TRUE(Copy("1.cab"));
  EXPECT_EQ(caller.log.find("NEXT"), std::string::npos);
  caller.unwanted = {"A", "C"};
  ASSERT_TRUE(Copy("1.cab"));
  EXPECT_EQ(caller.log,
            "open:d:\\1.cab INFO ENUMERATE:2 COPY:A COPY:B open:d:\\1.cab NEXT:2.cab "
            "open:d:\\2.cab INFO CLOSE:B ENUMERATE:0 ENUMERATE:0 ");
  ASSERT_TRUE(Copy("2.cab"));
  EXPECT_EQ(caller.log, "open:d:\\2.cab INFO ENUMERATE:2 PARTIAL:B COPY:C ENUMERATE:0 ");
}

TEST_F(CabModuleSet, EndsWhenTheNextCabinetIsNotTheRightOne) {
  Make();
  const std::string second = std::exchange(caller.disk["d:\\2.cab"], caller.disk["d:\\3.cab"]);
  EXPECT_FALSE(Copy("1.cab"));
  EXPECT_EQ(erf.erfOper, FDIERROR_WRONG_CABINET);
  caller.disk.erase("d:\\2.cab");
  EXPECT_FALSE(Copy("1.cab"));
  EXPECT_EQ(erf.erfOper, FDIERROR_CABINET_NOT_FOUND);
  caller.disk["d:\\2.cab"] = "no cabinet";
  caller.disk["e:\\2.cab"] = second;
  EXPECT_TRUE(Copy("1.cab")) << "the caller named another folder";
  EXPECT_TRUE(caller.output["B"] == text.substr(1000, 150'000));
}

TEST_F(CabModuleSet, OpensNothingOutsideItsFolder) {
  for (const std::string name : {"..\\2.cab", "e/2.cab", "..", ".", "", "\0010000002f2.cab"}) {
    SCOPED_TRACE(name);
    Make(CabMethod::kStored, 110'000, {"1.cab", name, "3.cab"});
    EXPECT_FALSE(Copy("1.cab"));
    EXPECT_EQ(erf.erfOper, FDIERROR_CORRUPT_CABINET);
    EXPECT_EQ(caller.log.find("NEXT"), std::string::npos) << "nobody is asked for it";
    EXPECT_FALSE(Copy("3.cab")) << "as the previous one";
    EXPECT_EQ(caller.log.find("open:d:\\" + name + " "), std::string::npos);
    const std::string first = caller.disk["d:\\1.cab"];
    Make();
    caller.disk["d:\\1.cab"] = first;
    EXPECT_FALSE(Copy("3.cab")) << "on the way back";
    EXPECT_EQ(erf.erfOper, FDIERROR_CORRUPT_CABINET);
  }
}

TEST_F(CabModule, EndsAtDamageAndKeepsWhatCameBefore) {
  const std::string text = Sample(70'000);
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", text.substr(0, 32'768)}, {"B", text.substr(32'768)}});
  const std::string good = builder.Build();
  const std::size_t end = good.size();
  const struct {
    const char* what;
    std::size_t place;
    std::string bytes;
    FDIERROR error;
    std::size_t filesKept;
  } cases[] = {
      {"signature", 0, "X", FDIERROR_NOT_A_CABINET, 0},
      {"version", 25, "\2", FDIERROR_UNKNOWN_CABINET_VERSION, 0},
      {"table beyond the end", 18, "\x70", FDIERROR_EOF, 0},
      {"method", 42, "\x09", FDIERROR_BAD_COMPR_TYPE, 0},
      {"LZX window of 2^31", 42, "\3\x1F", FDIERROR_BAD_COMPR_TYPE, 0},
      {"fewer blocks than files need", 40, "\1", FDIERROR_CORRUPT_CABINET, 1},
      {"folder of the second file", 44 + 18 + 8, "\1", FDIERROR_CORRUPT_CABINET, 1},
      {"data", end - 1, "!", FDIERROR_CORRUPT_CABINET, 1},
      {"size of the last block", end - 4465, "z", FDIERROR_CORRUPT_CABINET, 1},
  };
  for (const auto& [what, place, bytes, error, filesKept] : cases) {
    SCOPED_TRACE(what);
    EXPECT_FALSE(CopyBytes(std::string(good).replace(place, bytes.size(), bytes)));
    EXPECT_EQ(erf.erfOper, error);
    EXPECT_TRUE(erf.fError);
    EXPECT_EQ(std::count(caller.log.begin(), caller.log.end(), 'L'), filesKept);
  }
  EXPECT_TRUE(CopyBytes(good + "signature behind the end"));
}

TEST_F(CabModule, UnpacksFilesInAnyOrder) {
  const std::string text = Sample(90'000);
  CabBuilder builder;
  builder.Add(CabMethod::kLzx, {{"A", text.substr(0, 40'000)}, {"B", text.substr(40'000)}});
  std::string cabinet = builder.Build();
  // The two entries of the table exchange their sizes and places.
  std::swap_ranges(cabinet.begin() + 44, cabinet.begin() + 52, cabinet.begin() + 44 + 18);
  ASSERT_TRUE(CopyBytes(cabinet)) << erf.erfOper;
  EXPECT_TRUE(caller.output["B"] + caller.output["A"] == text);
}

TEST_F(CabModule, EndsWhereFoldersInTurnTakeForEver) {
  CabBuilder builder;
  builder.blockSize = 1;
  std::vector<CabFile> files{{"A", std::string(60'000, 'a')}};
  for (const char c : std::string("12345678")) files.push_back({std::string(1, c), "x"});
  builder.Add(CabMethod::kStored, files).Add(CabMethod::kStored, {{"B", std::string(61'000, 'b')}});
  caller.unwanted = {"A", "B"};
  std::string cabinet = builder.Build();
  ASSERT_TRUE(CopyBytes(cabinet));
  // Every second file lies in the other folder.
  for (std::size_t i = 2; i <= 8; i += 2) cabinet[52 + i * 18 + 8] = 1;
  EXPECT_FALSE(CopyBytes(cabinet));
  EXPECT_EQ(erf.erfOper, FDIERROR_CORRUPT_CABINET);
  EXPECT_EQ(std::count(caller.log.begin(), caller.log.end(), 'L'), 6);
}

TEST_F(CabModule, TellsWhatACabinetSaysOfItself) {
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", "1"}, {"B", "2"}}).headerReserve = 4;
  const std::string cabinet = builder.Build();
  FDICABINETINFO info;
  const auto isCabinet = [&](const std::string& bytes) {
    caller.disk["x"] = bytes;
    caller.open = {{1, {"x"}}};
    const BOOL result = Entry<PFNFDIISCABINET>("FDIIsCabinet")(hfdi, 1, &info);
    caller.open.clear();
    return result;
  };
  ASSERT_TRUE(isCabinet(cabinet));
  EXPECT_EQ(info.cbCabinet, static_cast<LONG>(cabinet.size()));
  EXPECT_EQ(info.cFiles * 100 + info.cFolders * 10 + info.iCabinet, 210);
  EXPECT_EQ(info.setID, 77);
  EXPECT_TRUE(info.fReserve && !info.hasprev && !info.hasnext);
  EXPECT_FALSE(isCabinet("MZ" + cabinet));
  EXPECT_FALSE(isCabinet(cabinet.substr(0, 35)));
}

}  // namespace
