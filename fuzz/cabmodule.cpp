// The cabinet module through its callbacks: files and memory are the caller's,
// who counts both.
#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>

#include "fuzz/cabinetset.h"
#include "fuzz/target.h"
#include "morvunp/platform/platform.h"

namespace fuzz {
namespace {

struct OpenFile {
  /// Empty and written to for an output file.
  std::string_view bytes;
  std::size_t position = 0;
  bool isOutput = false;
  std::size_t written = 0;
};

/// The callbacks carry no context.
struct Caller {
  std::vector<std::string_view> cabinets;
  std::map<INT_PTR, OpenFile> files;
  INT_PTR lastFile = 0;
  std::unordered_map<void*, std::size_t> memory;
  std::size_t memoryHeld = 0;
  /// 0 for as many as are asked for.
  std::uint64_t allocationsLeft = 0;
  std::size_t writesLeft = 4000;
  std::uint64_t unwantedFiles = 0;
};
Caller caller;

/// LZX windows of 2 MiB are the largest thing that a cabinet asks for.
constexpr std::size_t kMostMemory = std::size_t{16} << 20;

void* Alloc(ULONGLONG size) {
  if (caller.allocationsLeft != 0 && --caller.allocationsLeft == 0) return nullptr;
  Require(size <= kMostMemory, "no cabinet asks for much memory");
  void* const memory = std::malloc(static_cast<std::size_t>(size));
  caller.memory[memory] = static_cast<std::size_t>(size);
  caller.memoryHeld += static_cast<std::size_t>(size);
  Require(caller.memoryHeld <= kMostMemory, "no cabinet holds much memory");
  return memory;
}

void Free(void* memory) {
  const auto found = caller.memory.find(memory);
  Require(found != caller.memory.end(), "what is freed was allocated");
  caller.memoryHeld -= found->second;
  caller.memory.erase(found);
  std::free(memory);
}

/// The last letter but the extension tells which cabinet is meant.
// NOLINTNEXTLINE(readability-non-const-parameter): the interface's signature
INT_PTR Open(char* path, int, int) {
  const std::string name = path;
  const std::size_t digit = name.find_last_of("123");
  const std::size_t index = digit == name.npos ? 0 : static_cast<std::size_t>(name[digit] - '1');
  if (index >= caller.cabinets.size()) return -1;
  caller.files[++caller.lastFile] = {caller.cabinets[index]};
  return caller.lastFile;
}

OpenFile& FileOf(INT_PTR handle) {
  const auto found = caller.files.find(handle);
  Require(found != caller.files.end(), "only open files are used");
  return found->second;
}

UINT Read(INT_PTR handle, void* buffer, UINT count) {
  OpenFile& file = FileOf(handle);
  const std::string_view bytes = file.bytes.substr(std::min(file.position, file.bytes.size()));
  const auto length = std::min<std::size_t>(count, bytes.size());
  std::memcpy(buffer, bytes.data(), length);
  file.position += length;
  return static_cast<UINT>(length);
}

UINT Write(INT_PTR handle, void* buffer, UINT count) {
  OpenFile& file = FileOf(handle);
  Require(file.isOutput, "cabinets are only read");
  if (caller.writesLeft-- == 0) return static_cast<UINT>(-1);
  // Under the sanitizers this looks at each byte.
  static volatile unsigned sum;
  for (UINT i = 0; i < count; ++i) sum = sum + static_cast<unsigned char*>(buffer)[i];
  file.written += count;
  return count;
}

int Close(INT_PTR handle) {
  Require(caller.files.erase(handle) == 1, "each file is closed once");
  return 0;
}

LONG Seek(INT_PTR handle, LONG distance, int) {
  FileOf(handle).position = static_cast<std::size_t>(distance);
  return distance;
}

INT_PTR CopyFile(const FDINOTIFICATION& about) {
  // Some are passed over, by the bits of the input.
  const std::uint64_t bits = caller.unwantedFiles;
  caller.unwantedFiles = bits >> 1 | bits << 63;
  if ((bits & 1) != 0) return 0;
  OpenFile& file = caller.files[++caller.lastFile];
  file.isOutput = true;
  file.position = static_cast<DWORD>(about.cb);
  return caller.lastFile;
}

INT_PTR CloseFile(const FDINOTIFICATION& about) {
  const OpenFile& file = FileOf(about.hf);
  Require(file.written == file.position, "a complete file has its recorded size");
  Close(about.hf);
  return TRUE;
}

INT_PTR Notify(FDINOTIFICATIONTYPE type, FDINOTIFICATION* about) {
  if (type == fdintCOPY_FILE) return CopyFile(*about);
  if (type == fdintCLOSE_FILE_INFO) return CloseFile(*about);
  return 0;
}

template <class Function>
Function Entry(const char* name) {
  // Never let go: coverage is counted in the module itself.
  static const HMODULE module = LoadLibraryW(L"Cabinet.dll");
  Require(module != nullptr, "the module stands beside the program");
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

void Describe(HFDI context) {
  FDICABINETINFO info;
  const INT_PTR file = Open(std::string("1").data(), 0, 0);
  if (file == -1) return;
  Entry<PFNFDIISCABINET>("FDIIsCabinet")(context, file, &info);
  Close(file);
}

}  // namespace

void RunCabinetModule(std::string_view bytes) {
  caller = {};
  Input input(bytes);
  caller.unwantedFiles = input.Number(1);
  // Most inputs get all the memory that they want.
  const std::uint64_t allocations = input.Number(1);
  caller.allocationsLeft = allocations < 64 ? allocations : 0;
  caller.cabinets = CabinetsOf(input);
  ERF error;
  const HFDI context = Entry<PFNFDICREATE>("FDICreate")(Alloc, Free, Open, Read, Write, Close, Seek,
                                                        cpuUNKNOWN, &error);
  if (context != nullptr) {
    Describe(context);
    std::string name = "1.cab";
    std::string folder = "d:\\";
    const BOOL copied = Entry<PFNFDICOPY>("FDICopy")(context, name.data(), folder.data(), 0, Notify,
                                                     nullptr, nullptr);
    Require((copied != FALSE) == (error.fError == FALSE), "a failure has a reason");
    Entry<PFNFDIDESTROY>("FDIDestroy")(context);
  }
  Require(caller.files.empty(), "every file is closed");
  Require(caller.memory.empty(), "all memory is freed");
}

}  // namespace fuzz
