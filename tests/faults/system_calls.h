// What is known of the system calls that touch files, and of the ways in which they fail.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace orx::faults {

struct SystemCall {
  long number = 0;
  std::array<std::uint64_t, 6> arguments{};
};

namespace trait {
inline constexpr unsigned opens = 1;      // gives a descriptor
inline constexpr unsigned transfers = 2;  // of argument 2 bytes, or pieces, or a part of them
inline constexpr unsigned changes = 4;    // the disk may be another afterwards
inline constexpr unsigned grows = 8;      // may need space
inline constexpr unsigned waits = 16;     // a signal may end it before anything is done
inline constexpr unsigned syncs = 32;
inline constexpr unsigned steps = 64;  // changes a name or a mode, as few do
}  // namespace trait

struct CallKind {
  long number;
  const char* name;
  int path;  // the argument that is a path, -1 for none
  unsigned traits;
};
// Those at which a program is stopped.
[[nodiscard]] std::span<const CallKind> callKinds();
[[nodiscard]] const CallKind& kindOf(const SystemCall& call);
[[nodiscard]] bool has(const SystemCall& call, unsigned traits);

enum class Fault { error, errorOn, partly, killBefore, killAfter };
struct FaultKind {
  const char* name;
  Fault fault;
  int error = 0;      // what the call is answered with
  unsigned only = 0;  // the trait of the calls that can have it, 0: all
};
[[nodiscard]] std::span<const FaultKind> faultKinds();
// Whether the system could answer the call like that.
[[nodiscard]] bool applies(const FaultKind& kind, const SystemCall& call);

// False for what mmap and fcntl do without a file: memory, flags of a descriptor.
[[nodiscard]] bool touchesFile(const SystemCall& call);
// A call of the engine, whose code is not ours. Of its reads only the size tells.
[[nodiscard]] bool isEnginesOwn(const SystemCall& call);
// Standard input, output or error, which are no files of the disk that fails.
[[nodiscard]] bool isStream(const SystemCall& call);
// An exchange of two names, which not every file system has.
[[nodiscard]] bool exchanges(const SystemCall& call);

}  // namespace orx::faults
