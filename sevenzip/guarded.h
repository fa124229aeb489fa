// Where the engine calls us, nothing may be thrown through it.
#pragma once

#include <exception>
#include <new>
#include <utility>

#include "morvunp/platform/platform.h"

namespace morvunp::sevenzip {

/// What the engine's caller must throw again behind it. Of the thread: the
/// engine is called, and calls, on one, and an inner call ends before the outer.
inline std::exception_ptr& Thrown() {
  thread_local std::exception_ptr thrown;
  return thrown;
}

/// The result of `operation`; what it throws becomes a result code, and is kept.
template <class Operation>
HRESULT Guarded(Operation operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    Thrown() = std::current_exception();
    return E_OUTOFMEMORY;
  } catch (...) {
    Thrown() = std::current_exception();
    return E_FAIL;
  }
}

}  // namespace morvunp::sevenzip
