#include "faults/faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace testsupport {
namespace {

/// kMake: what an output file or folder cannot do without, but for its data.
enum class Kind { kOther, kRead, kWrite, kMake, kMemory };

const FaultPlan* plan = nullptr;
int callsBefore = 0;
bool hasStruck = false;
bool hasStruckOutput = false;

bool IsMeant(Kind kind) {
  switch (plan->calls) {
    case Calls::kFiles:
      return kind != Kind::kMemory;
    case Calls::kTransfers:
      return kind == Kind::kRead || kind == Kind::kWrite;
    case Calls::kWrites:
      return kind == Kind::kWrite;
    case Calls::kOutput:
      return kind == Kind::kWrite || kind == Kind::kMake;
    case Calls::kMemory:
      return kind == Kind::kMemory;
  }
  return false;
}

/// True when this call is to fail.
bool Strikes(Kind kind) {
  if (plan == nullptr || !IsMeant(kind)) return false;
  if (callsBefore > 0) {
    --callsBefore;
    return false;
  }
  if (hasStruck && !plan->persists) return false;
  hasStruck = true;
  hasStruckOutput |= kind == Kind::kWrite || kind == Kind::kMake;
  if (plan->fault != Fault::kEvent) return true;
  const FaultPlan& whole = *std::exchange(plan, nullptr);
  whole.event();
  return false;
}

/// The system's own function.
template <class Function>
Function Next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <class Call>
int Do(Kind kind, Call call) {
  if (!Strikes(kind)) return static_cast<int>(call());
  errno = EIO;
  return -1;
}

template <class Call>
int Other(Call call) {
  return Do(Kind::kOther, call);
}

bool IsForWriting(int file) {
  const int flags = fcntl(file, F_GETFL);
  return flags >= 0 && (flags & O_PATH) == 0 && (flags & O_ACCMODE) == O_WRONLY;
}

template <class Call>
ssize_t Transfer(Kind kind, std::size_t count, Call call) {
  if (!Strikes(kind)) return call(count);
  if (plan->fault == Fault::kShort) return call(std::max<std::size_t>(count / 2, 1));
  errno = plan->fault == Fault::kInterrupted ? EINTR : EIO;
  return -1;
}

/// What the engines ask for is not ours to refuse.
bool IsForEngine(void* caller) {
  Dl_info info{};
  if (dladdr(caller, &info) == 0 || info.dli_fname == nullptr) return false;
  return std::strstr(info.dli_fname, "7z.so") != nullptr ||
         std::strstr(info.dli_fname, "libunrar") != nullptr;
}

void* Allocate(std::size_t size, void* caller) {
  if (plan != nullptr && plan->calls == Calls::kMemory && !IsForEngine(caller) &&
      Strikes(Kind::kMemory)) {
    return nullptr;
  }
  return std::malloc(size);
}

void* AllocateOrThrow(std::size_t size, void* caller) {
  void* const memory = Allocate(size, caller);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

bool RunWithFault(const FaultPlan& wanted, const std::function<void()>& operation) {
  struct Disarm {
    ~Disarm() { plan = nullptr; }
  } const disarm;
  callsBefore = wanted.after;
  hasStruck = false;
  hasStruckOutput = false;
  plan = &wanted;
  operation();
  return hasStruck;
}

bool HasStruckOutput() { return hasStruckOutput; }

}  // namespace testsupport

using testsupport::Do;
using testsupport::IsForWriting;
using testsupport::Kind;
using testsupport::Next;
using testsupport::Other;
using testsupport::Transfer;

// Seen by the engines' libraries too.
#pragma GCC visibility push(default)

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name,misc-new-delete-overloads,clang-analyzer-valist.Uninitialized)
extern "C" {

int open(const char* path, int flags, ...) {
  static const auto next = Next(&open, "open");
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : mode_t{0};
  va_end(more);
  return Other([&] { return next(path, flags, mode); });
}

int close(int file) {
  static const auto next = Next(&close, "close");
  const Kind kind = IsForWriting(file) ? Kind::kMake : Kind::kOther;
  // Whatever it answers, the descriptor is gone.
  const int result = next(file);
  return Do(kind, [&] { return result; });
}

ssize_t read(int file, void* buffer, std::size_t count) {
  static const auto next = Next(&read, "read");
  return Transfer(Kind::kRead, count, [&](std::size_t some) { return next(file, buffer, some); });
}

ssize_t pread(int file, void* buffer, std::size_t count, off_t offset) {
  static const auto next = Next(&pread, "pread");
  return Transfer(Kind::kRead, count,
                  [&](std::size_t some) { return next(file, buffer, some, offset); });
}

ssize_t write(int file, const void* buffer, std::size_t count) {
  static const auto next = Next(&write, "write");
  return Transfer(Kind::kWrite, count, [&](std::size_t some) { return next(file, buffer, some); });
}

off_t lseek(int file, off_t offset, int origin) noexcept {
  static const auto next = Next(&lseek, "lseek");
  off_t result = -1;
  return Other([&] { return result = next(file, offset, origin), 0; }) == 0 ? result : -1;
}

int fstat(int file, struct stat* status) noexcept {
  static const auto next = Next(&fstat, "fstat");
  return Other([&] { return next(file, status); });
}

int ftruncate(int file, off_t length) noexcept {
  static const auto next = Next(&ftruncate, "ftruncate");
  return Do(Kind::kMake, [&] { return next(file, length); });
}

int futimens(int file, const timespec times[2]) noexcept {
  static const auto next = Next(&futimens, "futimens");
  return Other([&] { return next(file, times); });
}

int mkdir(const char* path, mode_t mode) noexcept {
  static const auto next = Next(&mkdir, "mkdir");
  return Do(Kind::kMake, [&] { return next(path, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
  static const auto next = Next(&openat, "openat");
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : mode_t{0};
  va_end(more);
  const bool isForWriting = (flags & O_PATH) == 0 && (flags & O_ACCMODE) == O_WRONLY;
  return Do(isForWriting ? Kind::kMake : Kind::kOther,
            [&] { return next(folder, path, flags, mode); });
}

/// The system's library knows no openat2.
long syscall(long number, ...) noexcept {
  static const auto next = Next(&syscall, "syscall");
  va_list more;
  va_start(more, number);
  long values[6];
  for (long& value : values) value = va_arg(more, long);
  va_end(more);
  const auto call = [&] {
    return next(number, values[0], values[1], values[2], values[3], values[4], values[5]);
  };
  return number == SYS_openat2 ? Do(Kind::kMake, call) : call();
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  static const auto next = Next(&mkdirat, "mkdirat");
  return Do(Kind::kMake, [&] { return next(folder, path, mode); });
}

int renameat(int folder, const char* from, int newFolder, const char* to) noexcept {
  static const auto next = Next(&renameat, "renameat");
  return Do(Kind::kMake, [&] { return next(folder, from, newFolder, to); });
}

int unlinkat(int folder, const char* path, int flags) noexcept {
  static const auto next = Next(&unlinkat, "unlinkat");
  return Other([&] { return next(folder, path, flags); });
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  static const auto next = Next(&fstatat, "fstatat");
  return Other([&] { return next(folder, path, status, flags); });
}

int fchmod(int file, mode_t mode) noexcept {
  static const auto next = Next(&fchmod, "fchmod");
  return Other([&] { return next(file, mode); });
}

}  // extern "C"

void* operator new(std::size_t size) {
  return testsupport::AllocateOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size) {
  return testsupport::AllocateOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return testsupport::Allocate(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return testsupport::Allocate(size, __builtin_return_address(0));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
// NOLINTEND(readability-inconsistent-declaration-parameter-name,misc-new-delete-overloads,clang-analyzer-valist.Uninitialized)

#pragma GCC visibility pop
