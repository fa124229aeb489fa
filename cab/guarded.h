// The cabinet interface knows no exceptions: none may be thrown through it.
#pragma once

#include <exception>

namespace cab {

/// What a callback threw. The callbacks carry no context of the caller's, so
/// there is one for all.
std::exception_ptr& Thrown();

/// The result of a callback's `operation`. What that throws is kept, to be
/// thrown again behind the interface, which gets `failure`.
template <class Result, class Operation>
Result Guarded(Result failure, Operation operation) noexcept {
  try {
    return operation();
  } catch (...) {
    Thrown() = std::current_exception();
    return failure;
  }
}

}  // namespace cab
