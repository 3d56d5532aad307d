// What is known of the system calls that touch files, and of the ways in which they fail.
#pragma once

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>

namespace orx::faults {

struct SystemCall {
  long number = 0;
  std::array<std::uint64_t, 6> arguments{};
};

namespace trait {
inline constexpr unsigned none = 0;
inline constexpr unsigned opens = 1;      // gives a descriptor
inline constexpr unsigned transfers = 2;  // of argument 2 bytes, or pieces, or a part of them
inline constexpr unsigned changes = 4;    // the disk may be another afterwards
inline constexpr unsigned grows = 8;      // may need space
inline constexpr unsigned waits = 16;     // a signal may end it before anything is done
inline constexpr unsigned syncs = 32;
inline constexpr unsigned steps = 64;  // changes a name or a mode, as few do
// Those of several calls.
inline constexpr unsigned makes = changes | grows, sizing = makes | waits;
inline constexpr unsigned opening = opens | sizing, syncing = syncs | sizing;
inline constexpr unsigned reads = transfers | waits, writes = reads | makes;
inline constexpr unsigned removing = changes | waits, modes = steps | removing;
inline constexpr unsigned naming = steps | sizing;
}  // namespace trait

struct CallKind {
  long number;
  const char* name;
  int path;  // the argument that is a path, -1 for none
  unsigned traits;
};
// Those at which a program is stopped.
#define CALL(name, path, traits) \
  { SYS_##name, #name, path, trait::traits }
inline constexpr CallKind callKinds[]{
    CALL(open, 0, opening),      CALL(openat, 1, opening),     CALL(close, -1, waits),
    CALL(read, -1, reads),       CALL(pread64, -1, reads),     CALL(readv, -1, reads),
    CALL(write, -1, writes),     CALL(pwrite64, -1, writes),   CALL(writev, -1, writes),
    CALL(pwritev, -1, writes),   CALL(sendfile, -1, makes),    CALL(copy_file_range, -1, makes),
    CALL(fsync, -1, syncing),    CALL(fdatasync, -1, syncing), CALL(truncate, 0, sizing),
    CALL(ftruncate, -1, sizing), CALL(fallocate, -1, sizing),  CALL(mmap, -1, none),
    CALL(rename, 0, naming),     CALL(renameat, 1, naming),    CALL(renameat2, 1, naming),
    CALL(link, 0, naming),       CALL(linkat, 1, naming),      CALL(unlink, 0, removing),
    CALL(unlinkat, 1, changes),  CALL(mkdir, 0, makes),        CALL(mkdirat, 1, makes),
    CALL(rmdir, 0, changes),     CALL(chmod, 0, changes),      CALL(fchmod, -1, modes),
    CALL(fchmodat, 1, changes),  CALL(fchown, -1, removing),   CALL(fgetxattr, -1, none),
    CALL(fsetxattr, -1, none),   CALL(fremovexattr, -1, none), CALL(flistxattr, -1, none),
    CALL(getxattr, 0, none),     CALL(flock, -1, waits),       CALL(fcntl, -1, none),
    CALL(stat, 0, none),         CALL(lstat, 0, none),         CALL(fstat, -1, none),
    CALL(newfstatat, 1, none),   CALL(statx, 1, none),         CALL(statfs, 0, none),
    CALL(fstatfs, -1, none),     CALL(access, 0, none),        CALL(faccessat2, 1, none),
    CALL(readlink, 0, none),     CALL(readlinkat, 1, none),    CALL(getdents64, -1, none),
    CALL(lseek, -1, none)};
#undef CALL

inline const CallKind& kindOf(const SystemCall& call) {
  const auto* const found = std::ranges::find(callKinds, call.number, &CallKind::number);
  if (found == std::end(callKinds)) throw std::runtime_error("a call of no known kind");
  return *found;
}
inline bool has(const SystemCall& call, unsigned traits) {
  return (kindOf(call).traits & traits) != 0;
}

enum class Fault { error, errorOn, partly, killBefore, killAfter };
struct FaultKind {
  const char* name;
  Fault fault;
  int error = 0;      // what the call is answered with
  unsigned only = 0;  // the trait of the calls that can have it, 0: all
};
inline constexpr FaultKind faultKinds[]{
    {"EIO", Fault::error, EIO},
    {"EIO-from-then-on", Fault::errorOn, EIO},  // of every file: the disk is gone
    {"ENOSPC", Fault::error, ENOSPC, trait::grows},
    {"EDQUOT", Fault::error, EDQUOT, trait::grows},
    {"EINTR", Fault::error, EINTR},
    {"EMFILE", Fault::error, EMFILE, trait::opens},
    {"short", Fault::partly, 0, trait::transfers},  // half of the bytes
    {"kill-before", Fault::killBefore},
    {"kill-after", Fault::killAfter}};

// Whether the system could answer the call like that.
inline bool applies(const FaultKind& kind, const SystemCall& call) {
  if (kind.only != 0 && !has(call, kind.only)) return false;
  return kind.fault != Fault::partly || call.arguments[2] > 1;
}

inline bool isOneOf(const SystemCall& call, std::initializer_list<long> numbers) {
  return std::ranges::find(numbers, call.number) != numbers.end();
}

// False for what mmap and fcntl do without a file: memory, flags of a descriptor.
inline bool touchesFile(const SystemCall& call) {
  constexpr std::uint32_t none = 0xFFFFFFFF;
  if (call.number == SYS_mmap) return static_cast<std::uint32_t>(call.arguments[4]) != none;
  const auto command = static_cast<int>(call.arguments[1]);
  return call.number != SYS_fcntl || command == F_SETLK || command == F_SETLKW ||
         command == F_OFD_SETLK || command == F_OFD_SETLKW;
}
// A call of the engine, whose code is not ours. Of its reads only the size tells.
inline bool isEnginesOwn(const SystemCall& call) {
  constexpr std::uint64_t headSize = 152;
  if (call.number == SYS_pread64) return call.arguments[2] == headSize;
  if (call.number != SYS_openat) return isOneOf(call, {SYS_pwrite64, SYS_pwritev, SYS_writev});
  const auto flags = static_cast<int>(call.arguments[2]);
  return (flags & O_ACCMODE) != O_RDONLY && (flags & (O_EXCL | O_DIRECTORY)) == 0;
}
// Standard input, output or error, which are no files of the disk that fails.
inline bool isStream(const SystemCall& call) {
  return isOneOf(call, {SYS_read, SYS_write, SYS_writev, SYS_close, SYS_fstat}) &&
         call.arguments[0] <= 2;
}
// An exchange of two names, which not every file system has.
inline bool exchanges(const SystemCall& call) {
  constexpr std::uint64_t renameExchange = 2;  // RENAME_EXCHANGE
  return call.number == SYS_renameat2 && call.arguments[4] == renameExchange;
}

}  // namespace orx::faults
