// The caller's callbacks, and memory and files that are got through them.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "morvunp/platform/fdi.h"

namespace cabinet {

/// Ends an operation. Thrown inside the module only; never leaves it.
struct Failure {
  FDIERROR error;
};

[[noreturn]] inline void Fail(FDIERROR error) { throw Failure{error}; }

struct Host {
  PFNALLOC alloc;
  PFNFREE free;
  PFNOPEN open;
  PFNREAD read;
  PFNWRITE write;
  PFNCLOSE close;
  PFNSEEK seek;
};

/// Bytes from the caller's allocator, not initialised.
class Memory {
 public:
  Memory(const Host& host, std::size_t size)
      : m_pfnFree(host.free), m_pBytes(static_cast<BYTE*>(host.alloc(size))) {
    if (m_pBytes == nullptr) Fail(FDIERROR_ALLOC_FAIL);
  }
  ~Memory() { m_pfnFree(m_pBytes); }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  BYTE* Get() const { return m_pBytes; }

 private:
  PFNFREE m_pfnFree;
  BYTE* m_pBytes;
};

/// Gives an object's memory back where it came from.
template <class T>
struct Deleter {
  PFNFREE free = nullptr;
  /// Where the allocation begins; the object may be a base further on.
  void* memory = nullptr;

  void operator()(T* object) const {
    object->~T();
    free(memory);
  }
};

template <class T>
using Owned = std::unique_ptr<T, Deleter<T>>;

/// Makes a `T`, seen as a `Base`, in the caller's memory.
template <class Base, class T = Base, class... Arguments>
Owned<Base> Make(const Host& host, Arguments&&... arguments) {
  void* const memory = host.alloc(sizeof(T));
  if (memory == nullptr) Fail(FDIERROR_ALLOC_FAIL);
  try {
    return Owned<Base>(new (memory) T(std::forward<Arguments>(arguments)...),
                       Deleter<Base>{host.free, memory});
  } catch (...) {
    host.free(memory);
    throw;
  }
}

}  // namespace cabinet
