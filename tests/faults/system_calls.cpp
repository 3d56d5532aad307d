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
constexpr unsigned makes = changes | grows;
constexpr std::array knownCalls{
    CallKind{SYS_open, "open", 0, opens | makes | waits},
    CallKind{SYS_openat, "openat", 1, opens | makes | waits},
    CallKind{SYS_close, "close", -1, waits},
    CallKind{SYS_read, "read", -1, transfers | waits},
    CallKind{SYS_pread64, "pread", -1, transfers | waits},
    CallKind{SYS_readv, "readv", -1, transfers | waits},
    CallKind{SYS_write, "write", -1, transfers | makes | waits},
    CallKind{SYS_pwrite64, "pwrite", -1, transfers | makes | waits},
    CallKind{SYS_writev, "writev", -1, transfers | makes | waits},
    CallKind{SYS_pwritev, "pwritev", -1, transfers | makes | waits},
    CallKind{SYS_sendfile, "sendfile", -1, makes},
    CallKind{SYS_copy_file_range, "copy_file_range", -1, makes},
    CallKind{SYS_fsync, "fsync", -1, makes | waits | syncs},
    CallKind{SYS_fdatasync, "fdatasync", -1, makes | waits | syncs},
    CallKind{SYS_truncate, "truncate", 0, makes | waits},
    CallKind{SYS_ftruncate, "ftruncate", -1, makes | waits},
    CallKind{SYS_fallocate, "fallocate", -1, makes | waits},
    CallKind{SYS_mmap, "mmap", -1, 0},
    CallKind{SYS_rename, "rename", 0, makes | waits | steps},
    CallKind{SYS_renameat, "renameat", 1, makes | waits | steps},
    CallKind{SYS_renameat2, "renameat2", 1, makes | waits | steps},
    CallKind{SYS_link, "link", 0, makes | waits | steps},
    CallKind{SYS_linkat, "linkat", 1, makes | waits | steps},
    CallKind{SYS_unlink, "unlink", 0, changes | waits},
    CallKind{SYS_unlinkat, "unlinkat", 1, changes},
    CallKind{SYS_mkdir, "mkdir", 0, makes},
    CallKind{SYS_mkdirat, "mkdirat", 1, makes},
    CallKind{SYS_rmdir, "rmdir", 0, changes},
    CallKind{SYS_chmod, "chmod", 0, changes},
    CallKind{SYS_fchmod, "fchmod", -1, changes | waits | steps},
    CallKind{SYS_fchmodat, "fchmodat", 1, changes},
    CallKind{SYS_fchown, "fchown", -1, changes | waits},
    CallKind{SYS_fgetxattr, "fgetxattr", -1, 0},
    CallKind{SYS_fsetxattr, "fsetxattr", -1, 0},
    CallKind{SYS_fremovexattr, "fremovexattr", -1, 0},
    CallKind{SYS_flistxattr, "flistxattr", -1, 0},
    CallKind{SYS_getxattr, "getxattr", 0, 0},
    CallKind{SYS_flock, "flock", -1, waits},
    CallKind{SYS_fcntl, "fcntl", -1, 0},
    CallKind{SYS_stat, "stat", 0, 0},
    CallKind{SYS_lstat, "lstat", 0, 0},
    CallKind{SYS_fstat, "fstat", -1, 0},
    CallKind{SYS_newfstatat, "fstatat", 1, 0},
    CallKind{SYS_statx, "statx", 1, 0},
    CallKind{SYS_statfs, "statfs", 0, 0},
    CallKind{SYS_fstatfs, "fstatfs", -1, 0},
    CallKind{SYS_access, "access", 0, 0},
    CallKind{SYS_faccessat2, "faccessat2", 1, 0},
    CallKind{SYS_readlink, "readlink", 0, 0},
    CallKind{SYS_readlinkat, "readlinkat", 1, 0},
    CallKind{SYS_getdents64, "getdents", -1, 0},
    CallKind{SYS_lseek, "lseek", -1, 0},
};

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
  if (found == knownCalls.end()) throw std::runtime_error("a call of no known kind");
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
