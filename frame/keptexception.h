// Exceptions on their way around an interface that knows none.
#pragma once

#include <exception>
#include <utility>

namespace morvunp::frame {

/// The result of a callback's `operation`. What that throws goes to `kept`, and
/// the interface gets `failure`.
template <class Result, class Operation>
Result KeepException(std::exception_ptr& kept, Result failure, Operation operation) noexcept {
  try {
    return operation();
  } catch (...) {
    kept = std::current_exception();
    return failure;
  }
}

/// Behind the interface: throws what was kept, if anything was.
inline void ThrowKept(std::exception_ptr& kept) {
  if (kept) std::rethrow_exception(std::exchange(kept, nullptr));
}

}  // namespace morvunp::frame
