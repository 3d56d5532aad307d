// Runs a program as its tracer and lets one of its system calls fail.
//
// A filter in the program stops it at every call that touches a file, in each of its threads, and
// at no other, whichever library makes the call. Calls count from the first one on that names a
// file in the current directory of the program; what the loader reads before that does not.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/system_calls.h"
#include "tests/support/run_program.h"

namespace orx::faults {

// A call at which a thread of the program stands.
struct TracedCall {
  pid_t thread;
  SystemCall call;
  std::int64_t result = 0;  // once it has returned

  [[nodiscard]] int descriptor() const { return static_cast<int>(call.arguments[0]); }
  [[nodiscard]] std::string text(std::uint64_t address) const;
  // A path below /proc that leads to the file of a descriptor, whatever its name is.
  [[nodiscard]] std::string file(int descriptor) const;
};

struct TracedProgram {
  test::Program program = {};
  const FaultKind* fault = nullptr;
  std::size_t faultAt = 0;     // the call that fails, from 1
  bool exchangeFails = false;  // as on a file system that cannot exchange two names
  // Called before every counted call; with true its thread stands there until the program ends.
  std::function<bool(const TracedCall&)> onCall = {};
  // Called for every counted call that may change files and has returned.
  std::function<void(const TracedCall&)> onChange = {};
};

struct TracedResult : test::ProgramResult {
  std::vector<SystemCall> calls = {};  // those that were counted
  bool isDisturbed = false;            // the fault was met
};

// A program that hangs is ended by SIGALRM. Throws std::system_error when there is no way to trace
// at all.
[[nodiscard]] TracedResult runTraced(const TracedProgram& program);

}  // namespace orx::faults
