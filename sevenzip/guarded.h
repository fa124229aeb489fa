// Where the engine calls us, nothing may be thrown through it.
#pragma once

#include <new>

#include "platform/platform.h"

namespace sevenzip {

/// The result of `operation`; what it throws becomes a result code.
template <class Operation>
HRESULT Guarded(Operation operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace sevenzip
