#include "tests/faults/system_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <stdexcept>

namespace orx::faults {

namespace {

using namespace trait;
constexpr unsigned makes = changes | grows, sizing = makes | waits;
constexpr unsigned opening = opens | sizing, syncing = syncs | sizing, naming = steps | sizing;
constexpr unsigned reads = transfers | waits, writes = reads | makes;
constexpr unsigned removing = changes | waits, modes = steps | removing;
#define CALL(name, path, traits) \
  { SYS_##name, #name, path, traits }
constexpr CallKind knownCalls[]{CALL(open, 0, opening),      CALL(openat, 1, opening),
                                CALL(close, -1, waits),      CALL(read, -1, reads),
                                CALL(pread64, -1, reads),    CALL(readv, -1, reads),
                                CALL(write, -1, writes),     CALL(pwrite64, -1, writes),
                                CALL(writev, -1, writes),    CALL(pwritev, -1, writes),
                                CALL(sendfile, -1, makes),   CALL(copy_file_range, -1, makes),
                                CALL(fsync, -1, syncing),    CALL(fdatasync, -1, syncing),
                                CALL(truncate, 0, sizing),   CALL(ftruncate, -1, sizing),
                                CALL(fallocate, -1, sizing), CALL(mmap, -1, 0),
                                CALL(rename, 0, naming),     CALL(renameat, 1, naming),
                                CALL(renameat2, 1, naming),  CALL(link, 0, naming),
                                CALL(linkat, 1, naming),     CALL(unlink, 0, removing),
                                CALL(unlinkat, 1, changes),  CALL(mkdir, 0, makes),
                                CALL(mkdirat, 1, makes),     CALL(rmdir, 0, changes),
                                CALL(chmod, 0, changes),     CALL(fchmod, -1, modes),
                                CALL(fchmodat, 1, changes),  CALL(fchown, -1, removing),
                                CALL(fgetxattr, -1, 0),      CALL(fsetxattr, -1, 0),
                                CALL(fremovexattr, -1, 0),   CALL(flistxattr, -1, 0),
                                CALL(getxattr, 0, 0),        CALL(flock, -1, waits),
                                CALL(fcntl, -1, 0),          CALL(stat, 0, 0),
                                CALL(lstat, 0, 0),           CALL(fstat, -1, 0),
                                CALL(newfstatat, 1, 0),      CALL(statx, 1, 0),
                                CALL(statfs, 0, 0),          CALL(fstatfs, -1, 0),
                                CALL(access, 0, 0),          CALL(faccessat2, 1, 0),
                                CALL(readlink, 0, 0),        CALL(readlinkat, 1, 0),
                                CALL(getdents64, -1, 0),     CALL(lseek, -1, 0)};
#undef CALL

constexpr std::array knownFaults{
    FaultKind{"EIO", Fault::error, EIO},
    FaultKind{"EIO-from-then-on", Fault::errorOn, EIO},  // of every file: the disk is gone
    FaultKind{"ENOSPC", Fault::error, ENOSPC, grows},
    FaultKind{"EDQUOT", Fault::error, EDQUOT, grows},
    FaultKind{"EINTR", Fault::error, EINTR},
    FaultKind{"EMFILE", Fault::error, EMFILE, opens},
    FaultKind{"short", Fault::partly, 0, transfers},  // half of the bytes
    FaultKind{"kill-before", Fault::killBefore},
    FaultKind{"kill-after", Fault::killAfter},
};

bool isOneOf(const SystemCall& call, std::initializer_list<long> numbers) {
  return std::ranges::find(numbers, call.number) != numbers.end();
}

}  // namespace

std::span<const CallKind> callKinds() {
  return knownCalls;
}

const CallKind& kindOf(const SystemCall& call) {
  const auto* const found = std::ranges::find(knownCalls, call.number, &CallKind::number);
  if (found == std::end(knownCalls)) throw std::runtime_error("a call of no known kind");
  return *found;
}

bool has(const SystemCall& call, unsigned traits) {
  return (kindOf(call).traits & traits) != 0;
}

std::span<const FaultKind> faultKinds() {
  return knownFaults;
}

bool applies(const FaultKind& kind, const SystemCall& call) {
  if (kind.only != 0 && (kindOf(call).traits & kind.only) == 0) return false;
  return kind.fault != Fault::partly || call.arguments[2] > 1;
}

bool touchesFile(const SystemCall& call) {
  constexpr std::uint32_t none = 0xFFFFFFFF;
  if (call.number == SYS_mmap) return static_cast<std::uint32_t>(call.arguments[4]) != none;
  const auto command = static_cast<int>(call.arguments[1]);
  return call.number != SYS_fcntl || command == F_SETLK || command == F_SETLKW ||
         command == F_OFD_SETLK || command == F_OFD_SETLKW;
}

bool isEnginesOwn(const SystemCall& call) {
  constexpr std::uint64_t headSize = 152;
  if (call.number == SYS_pread64) return call.arguments[2] == headSize;
  if (call.number != SYS_openat) return isOneOf(call, {SYS_pwrite64, SYS_pwritev, SYS_writev});
  const auto flags = static_cast<int>(call.arguments[2]);
  return (flags & O_ACCMODE) != O_RDONLY && (flags & (O_EXCL | O_DIRECTORY)) == 0;
}

bool isStream(const SystemCall& call) {
  return isOneOf(call, {SYS_read, SYS_write, SYS_writev, SYS_close, SYS_fstat}) &&
         call.arguments[0] <= 2;
}

bool exchanges(const SystemCall& call) {
  constexpr std::uint64_t renameExchange = 2;  // RENAME_EXCHANGE
  return call.number == SYS_renameat2 && call.arguments[4] == renameExchange;
}

}  // namespace orx::faults
