// Failures of the system, made on purpose: the program that this is linked
// into has its system calls and its memory pass through here.
#pragma once

#include <functional>

namespace testsupport {

enum class Fault {
  /// Calls fail with EIO; memory runs out.
  kError,
  /// Reads and writes handle half of what they are asked for.
  kShort,
  /// Reads and writes fail with EINTR.
  kInterrupted,
  /// Something else happens before the call, which then goes on.
  kEvent
};

/// kOutput: writes, and what else an output file or folder cannot do without.
enum class Calls { kFiles, kTransfers, kWrites, kOutput, kMemory };

/// What is to fail.
struct FaultPlan {
  Calls calls;
  Fault fault;
  /// How many calls succeed before.
  int after;
  /// Not only the next call but every one after it fails too.
  bool persists = false;
  std::function<void()> event = {};
};

/// Carries out `operation` with the plan in force. True when a call came to
/// fail. What `operation` throws is passed on.
bool RunWithFault(const FaultPlan& plan, const std::function<void()>& operation);

/// A call that failed in the last run was one of Calls::kOutput.
bool HasStruckOutput();

}  // namespace testsupport
