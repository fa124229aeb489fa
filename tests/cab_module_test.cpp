// The cabinet decompression interface as its callers see it: loaded by name,
// every byte, file and piece of memory going through the callbacks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <set>

#include "platform/platform.h"
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
  std::set<void*> memory;
  bool readsFail = false;
  bool writesFail = false;

  /// Files to copy; all when not set.
  std::optional<std::set<std::string>> wanted;
  /// What was notified and opened, one word each.
  std::string log;
  FDINOTIFICATION copied;
  FDINOTIFICATION closed;
  std::function<INT_PTR(FDINOTIFICATION&)> onNextCabinet = [](FDINOTIFICATION&) { return 0; };
  FDINOTIFICATIONTYPE abortAt = FDINOTIFICATIONTYPE(-1);
};

Caller caller;

void* Alloc(ULONGLONG size) { return *caller.memory.insert(::operator new(size)).first; }
void Free(void* memory) {
  EXPECT_EQ(caller.memory.erase(memory), 1U) << "freed twice or never allocated";
  ::operator delete(memory);
}
INT_PTR Open(char* path, int flags, int mode) {
  EXPECT_EQ(flags, 0x8000);
  EXPECT_EQ(mode, 0x180);
  caller.log += std::string("open:") + path + " ";
  if (!caller.disk.contains(path)) return -1;
  caller.open[++caller.lastHandle] = {path};
  return caller.lastHandle;
}
UINT Read(INT_PTR handle, void* buffer, UINT count) {
  if (caller.readsFail) return static_cast<UINT>(-1);
  Caller::File& file = caller.open.at(handle);
  const std::string& bytes = caller.disk.at(file.name);
  const std::size_t start = std::min(file.position, bytes.size());
  const std::size_t length = std::min<std::size_t>(count, bytes.size() - start);
  std::memcpy(buffer, bytes.data() + start, length);
  file.position += length;
  return static_cast<UINT>(length);
}
UINT Write(INT_PTR handle, void* buffer, UINT count) {
  EXPECT_LE(count, 32768U);
  if (caller.writesFail) return static_cast<UINT>(-1);
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
  static const char* const kNames[] = {"INFO", "PARTIAL", "COPY", "CLOSE", "NEXT", "ENUMERATE"};
  caller.log += kNames[type];
  if (type != fdintENUMERATE && type != fdintCABINET_INFO)
    caller.log += ":" + std::string(about->psz1);
  if (type == fdintENUMERATE) caller.log += ":" + std::to_string(about->iFolder);
  caller.log += " ";
  if (type == caller.abortAt) return -1;
  if (type == fdintNEXT_CABINET) return caller.onNextCabinet(*about);
  if (type == fdintCLOSE_FILE_INFO) {
    caller.closed = *about;
    return Close(about->hf) == 0 ? TRUE : FALSE;
  }
  if (type != fdintCOPY_FILE) return 0;
  caller.copied = *about;
  if (caller.wanted && !caller.wanted->contains(about->psz1)) return 0;
  caller.output[about->psz1];
  caller.open[++caller.lastHandle] = {about->psz1};
  return caller.lastHandle;
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
    EXPECT_TRUE(caller.memory.empty()) << "memory left";
    FreeLibrary(module);
  }

  template <class Function>
  Function Entry(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
  }
  BOOL Copy(const std::string& name, const std::string& folder = "d:\\") {
    caller.log.clear();
    caller.output.clear();
    std::string copyOfName = name;
    std::string copyOfFolder = folder;
    return Entry<PFNFDICOPY>("FDICopy")(hfdi, copyOfName.data(), copyOfFolder.data(), 0, Notify,
                                        nullptr, &caller);
  }
  BOOL CopyBytes(const std::string& cabinet) {
    caller.disk["d:\\x.cab"] = cabinet;
    return Copy("x.cab");
  }

  HMODULE module = nullptr;
  HFDI hfdi = nullptr;
  ERF erf;
};

/// Text with repetitions near and far, calls of x86 and a stretch of noise.
std::string Sample(std::size_t size) {
  std::string text;
  std::uint32_t state = 12345;
  while (text.size() < size) {
    state = state * 1664525 + 1013904223;
    const std::size_t back = (state >> 8) % 60'000 + 1;
    const std::size_t length = (state >> 24) + 2;
    if (state % 3 != 0 && back < text.size()) {
      for (std::size_t i = 0; i < length; ++i) text += text[text.size() - back];
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
  for (const auto kind : {LzxBlocks::kVerbatim, LzxBlocks::kAligned, LzxBlocks::kUncompressed}) {
    // Odd sizes leave the words of what follows at odd places.
    for (const std::size_t blockSize : {32'768U, 50'001U, 9'999U, 200'000U}) {
      cases.push_back({CabMethod::kLzx, {15, kind, blockSize, 0}});
      cases.push_back({CabMethod::kLzx, {21, kind, blockSize, 170'000}});
    }
  }
  const std::string text = Sample(450'000);
  for (const auto& [method, lzx] : cases) {
    SCOPED_TRACE(testing::Message() << "method " << int(method) << ", blocks of " << lzx.blockSize
                                    << " of kind " << int(lzx.blocks));
    CabBuilder builder;
    builder.Add(method, {{"a", text.substr(0, 3)}, {"b", text.substr(3)}, {"empty", ""}}, lzx);
    ASSERT_TRUE(CopyBytes(builder.Build())) << erf.erfOper;
    EXPECT_EQ(caller.output["a"], text.substr(0, 3));
    EXPECT_TRUE(caller.output["b"] == text.substr(3));
    EXPECT_TRUE(caller.output.contains("empty"));
  }
}

TEST_F(CabModule, PassesOverReservesAndAcceptsBothSums) {
  const std::string text = Sample(100'000);
  for (const bool sumsReserve : {true, false}) {
    CabBuilder builder;
    builder.Add(CabMethod::kMszip, {{"a", text}}).Add(CabMethod::kStored, {{"b", "x"}});
    builder.headerReserve = 6144;
    builder.folderReserve = 5;
    builder.blockReserve = 7;
    builder.sumsReserve = sumsReserve;
    ASSERT_TRUE(CopyBytes(builder.Build())) << erf.erfOper;
    EXPECT_TRUE(caller.output["a"] == text && caller.output["b"] == "x");
  }
}

TEST_F(CabModule, NotifiesInThePublishedOrder) {
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", "1", _A_EXEC | 0x21}, {"B", "2"}});
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.log,
            "open:d:\\x.cab INFO ENUMERATE:2 COPY:A open:d:\\x.cab CLOSE:A COPY:B CLOSE:B "
            "ENUMERATE:0 ");
  caller.wanted = {"A"};
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.copied.cb, 1);
  EXPECT_EQ(caller.copied.date, CabFile{}.date);
  EXPECT_EQ(caller.copied.time, CabFile{}.time);
  EXPECT_EQ(caller.closed.attribs, 0x21) << "the executable bit moves to cb";
  EXPECT_EQ(caller.closed.cb, 1);
  caller.wanted.emplace();
  ASSERT_TRUE(CopyBytes(builder.Build()));
  EXPECT_EQ(caller.log, "open:d:\\x.cab INFO ENUMERATE:2 COPY:A COPY:B ENUMERATE:0 ")
      << "what is skipped is not even opened";
}

class CabModuleSet : public CabModule {
 protected:
  /// A is whole in the first cabinet, B and C reach into later ones, D lies in
  /// the last.
  void SetUp() override {
    CabModule::SetUp();
    const std::string text = Sample(300'000);
    for (const auto& [name, start, length] : {std::tuple("A", 0, 1000),
                                              {"B", 1000, 150'000},
                                              {"C", 151'000, 120'000},
                                              {"D", 271'000, 29'000}}) {
      content[name] =
          text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    }
  }
  std::size_t Make(CabMethod method) {
    CabBuilder builder;
    builder.Add(
        method,
        {{"A", content["A"]}, {"B", content["B"]}, {"C", content["C"]}, {"D", content["D"]}});
    std::size_t size = 0;
    for (const auto& block : CabBuilder::Pack(builder.folders[0])) size += block.packed.size();
    const auto cabinets = builder.BuildSet(size / 3 + 1, {"1.cab", "2.cab", "3.cab"});
    for (std::size_t i = 0; i < cabinets.size(); ++i) {
      caller.disk["d:\\" + std::to_string(i + 1) + ".cab"] = cabinets[i];
    }
    return cabinets.size();
  }

  std::map<std::string, std::string> content;
};

TEST_F(CabModuleSet, JoinsBlocksThatAreCutBetweenCabinets) {
  for (const CabMethod method : {CabMethod::kStored, CabMethod::kMszip, CabMethod::kLzx}) {
    ASSERT_EQ(Make(method), 3U);
    ASSERT_TRUE(Copy("1.cab")) << erf.erfOper;
    EXPECT_TRUE(caller.output["A"] == content["A"] && caller.output["B"] == content["B"]);
    EXPECT_FALSE(caller.output.contains("D")) << "D begins in a later cabinet";
    // The folder of the last cabinet begins in the first.
    ASSERT_TRUE(Copy("3.cab")) << erf.erfOper;
    EXPECT_TRUE(caller.output.size() == 1 && caller.output["D"] == content["D"]);
  }
}

TEST_F(CabModuleSet, AsksForTheNextCabinetWhenItsDataIsNeeded) {
  Make(CabMethod::kStored);
  caller.wanted = {"A"};
  ASSERT_TRUE(Copy("1.cab"));
  EXPECT_EQ(caller.log.find("NEXT"), std::string::npos);
  caller.wanted = {"B"};
  ASSERT_TRUE(Copy("1.cab"));
  EXPECT_EQ(caller.log,
            "open:d:\\1.cab INFO ENUMERATE:2 COPY:A COPY:B open:d:\\1.cab NEXT:2.cab "
            "open:d:\\2.cab INFO CLOSE:B ENUMERATE:0 ENUMERATE:0 ");
  ASSERT_TRUE(Copy("2.cab"));
  EXPECT_EQ(caller.log, "open:d:\\2.cab INFO ENUMERATE:2 PARTIAL:B COPY:C ENUMERATE:0 ");
}

TEST_F(CabModuleSet, EndsWhenTheNextCabinetIsNotTheRightOne) {
  Make(CabMethod::kStored);
  caller.disk["d:\\2.cab"] = caller.disk["d:\\3.cab"];
  EXPECT_FALSE(Copy("1.cab"));
  EXPECT_EQ(erf.erfOper, FDIERROR_WRONG_CABINET);
  caller.disk.erase("d:\\2.cab");
  EXPECT_FALSE(Copy("1.cab"));
  EXPECT_EQ(erf.erfOper, FDIERROR_CABINET_NOT_FOUND);
  Make(CabMethod::kStored);
  caller.disk["e:\\2.cab"] = caller.disk["d:\\2.cab"];
  caller.disk["d:\\2.cab"] = "no cabinet";
  caller.onNextCabinet = [](FDINOTIFICATION& about) {
    if (about.fdie == FDIERROR_NOT_A_CABINET) std::strcpy(about.psz3, "e:\\");
    return 0;
  };
  EXPECT_TRUE(Copy("1.cab")) << "the caller named another folder";
  EXPECT_TRUE(caller.output["B"] == content["B"]);
}

struct Damage {
  const char* what;
  /// Where to write which byte, from the end when negative.
  int place;
  char byte;
  FDIERROR error;
  std::size_t filesKept;
};

TEST_F(CabModule, EndsAtDamageAndKeepsWhatCameBefore) {
  const std::string text = Sample(70'000);
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", text.substr(0, 32'768)}, {"B", text.substr(32'768)}});
  const std::string good = builder.Build();
  const Damage cases[] = {
      {"signature", 0, 'X', FDIERROR_NOT_A_CABINET, 0},
      {"version", 25, 2, FDIERROR_UNKNOWN_CABINET_VERSION, 0},
      {"table beyond the end", 18, 0x70, FDIERROR_EOF, 0},
      {"method", 42, 9, FDIERROR_BAD_COMPR_TYPE, 0},
      {"LZX window of 2^31", 43, 31, FDIERROR_BAD_COMPR_TYPE, 0},
      {"fewer blocks than files need", 40, 1, FDIERROR_CORRUPT_CABINET, 1},
      {"folder of the second file", 44 + 18 + 8, 1, FDIERROR_CORRUPT_CABINET, 1},
      {"data", -1, '!', FDIERROR_CORRUPT_CABINET, 1},
      {"size of the last block", -4465, 'z', FDIERROR_CORRUPT_CABINET, 1},
  };
  for (const Damage& damage : cases) {
    SCOPED_TRACE(damage.what);
    std::string bad = good;
    bad[static_cast<std::size_t>(damage.place) + (damage.place < 0 ? bad.size() : 0)] = damage.byte;
    if (damage.byte == 31) bad[42] = 3;
    EXPECT_FALSE(CopyBytes(bad));
    EXPECT_EQ(erf.erfOper, damage.error);
    EXPECT_TRUE(erf.fError);
    EXPECT_EQ(std::count(caller.log.begin(), caller.log.end(), 'L'), damage.filesKept);
  }
  EXPECT_TRUE(CopyBytes(good + "signature behind the end"));
}

TEST_F(CabModule, EndsWhenTheCallerCannotGoOn) {
  CabBuilder builder;
  builder.Add(CabMethod::kMszip, {{"A", Sample(70'000)}, {"B", "b"}});
  const std::string cabinet = builder.Build();
  caller.writesFail = true;
  EXPECT_FALSE(CopyBytes(cabinet));
  EXPECT_EQ(erf.erfOper, FDIERROR_TARGET_FILE);
  caller.writesFail = false;
  for (const auto type : {fdintCABINET_INFO, fdintENUMERATE, fdintCOPY_FILE}) {
    caller.abortAt = type;
    EXPECT_FALSE(CopyBytes(cabinet));
    EXPECT_EQ(erf.erfOper, FDIERROR_USER_ABORT);
  }
  caller.abortAt = FDINOTIFICATIONTYPE(-1);
  caller.readsFail = true;
  EXPECT_FALSE(CopyBytes(cabinet));
  caller.readsFail = false;
  EXPECT_TRUE(CopyBytes(cabinet));
  EXPECT_FALSE(erf.fError);
}

TEST_F(CabModule, UnpacksFilesInAnyOrder) {
  CabBuilder builder;
  const std::string text = Sample(90'000);
  builder.Add(CabMethod::kLzx, {{"A", text.substr(0, 40'000)}, {"B", text.substr(40'000)}});
  std::string cabinet = builder.Build();
  // The two entries of the table exchange their sizes and places.
  std::swap_ranges(cabinet.begin() + 44, cabinet.begin() + 52, cabinet.begin() + 44 + 18);
  ASSERT_TRUE(CopyBytes(cabinet)) << erf.erfOper;
  EXPECT_TRUE(caller.output["A"] == text.substr(40'000));
  EXPECT_TRUE(caller.output["B"] == text.substr(0, 40'000));
}

TEST_F(CabModule, TellsWhatACabinetSaysOfItself) {
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", "1"}, {"B", "2"}}).headerReserve = 4;
  caller.disk["x"] = builder.Build();
  caller.disk["stub"] = "MZ" + caller.disk["x"];
  caller.disk["short"] = caller.disk["x"].substr(0, 35);
  FDICABINETINFO info;
  const auto isCabinet = [&](const char* name) {
    caller.open[1] = {name};
    const BOOL result = Entry<PFNFDIISCABINET>("FDIIsCabinet")(hfdi, 1, &info);
    caller.open.clear();
    return result;
  };
  ASSERT_TRUE(isCabinet("x"));
  EXPECT_EQ(info.cbCabinet, static_cast<LONG>(caller.disk["x"].size()));
  EXPECT_EQ(info.cFiles * 100 + info.cFolders * 10 + info.iCabinet, 210);
  EXPECT_EQ(info.setID, 77);
  EXPECT_TRUE(info.fReserve && !info.hasprev && !info.hasnext);
  EXPECT_FALSE(isCabinet("stub"));
  EXPECT_FALSE(isCabinet("short"));
}

}  // namespace
