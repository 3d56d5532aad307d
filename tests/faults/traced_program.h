// Runs a program as its tracer and lets one of its system calls fail.
//
// A filter in the program stops it at every call that touches a file, in each of its threads, and
// at no other, whichever library makes the call. Calls count from the first one on that names a
// file in the current directory of the program; what the loader reads before that does not.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orx::faults {

enum class Fault {
  ioError,      // EIO
  ioErrorOn,    // EIO from this call on, of every file: the disk is gone
  noSpace,      // ENOSPC
  noQuota,      // EDQUOT
  interrupted,  // EINTR
  noFile,       // EMFILE
  partly,       // half of the bytes are read or written
  killBefore,
  killAfter,
};
inline constexpr std::array allFaults{Fault::ioError, Fault::ioErrorOn,   Fault::noSpace,
                                      Fault::noQuota, Fault::interrupted, Fault::noFile,
                                      Fault::partly,  Fault::killBefore,  Fault::killAfter};
[[nodiscard]] const char* nameOf(Fault fault);

struct SystemCall {
  long number = 0;
  std::array<std::uint64_t, 6> arguments{};
};
[[nodiscard]] std::string nameOf(const SystemCall& call);
// Whether the system could answer the call like that.
[[nodiscard]] bool applies(Fault fault, const SystemCall& call);
// Whether the call may change what is on the disk.
[[nodiscard]] bool changesFiles(const SystemCall& call);

// A call that has returned, while its thread still stands.
class FinishedCall {
 public:
  FinishedCall(pid_t thread, const SystemCall& call, std::int64_t result)
      : thread_(thread), call_(call), result_(result) {}

  [[nodiscard]] const SystemCall& call() const { return call_; }
  [[nodiscard]] std::int64_t result() const { return result_; }
  [[nodiscard]] std::string text(std::uint64_t address) const;
  [[nodiscard]] std::string bytes(std::uint64_t address, std::size_t size) const;
  // What the descriptor leads to, below /proc.
  [[nodiscard]] std::string descriptorPath(int descriptor) const;
  // Where the next read or write of the descriptor begins.
  [[nodiscard]] std::uint64_t position(int descriptor) const;

 private:
  pid_t thread_;
  SystemCall call_;
  std::int64_t result_;
};

struct TracedProgram {
  std::filesystem::path file = {};
  std::vector<std::string> arguments = {};
  std::filesystem::path directory = {};
  std::vector<std::string> environment = {};  // NAME=value, added to the caller's own
  std::optional<Fault> fault = {};
  std::size_t faultAt = 0;     // the call that fails, from 1
  bool exchangeFails = false;  // as on a file system that cannot exchange two names
  // Called once, before the program takes its first lock.
  std::function<void()> beforeLock = {};
  // Called for every counted call that may change files and has returned.
  std::function<void(const FinishedCall&)> onChange = {};
};

struct TracedResult {
  int exitCode = -1;  // -1 when a signal ended the program
  int signal = 0;
  std::string output;
  std::string errors;
  std::vector<SystemCall> calls = {};  // those that were counted
  bool isDisturbed = false;            // the fault was met
};

// Throws std::system_error when there is no way to trace at all.
[[nodiscard]] TracedResult runTraced(const TracedProgram& program);

}  // namespace orx::faults
