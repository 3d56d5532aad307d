#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <initializer_list>

#include "tests/faults/system_calls.h"

namespace orx::faults {

namespace {

enum Trait : unsigned {
  opens = 1,      // gives a descriptor
  transfers = 2,  // argument 2 is a number of bytes, or of pieces, that may be done in part
  changes = 4,    // the disk may be another afterwards
  grows = 8,      // may need space
  waits = 16,     // a signal may end it
};

struct Description {
  long number;
  const char* name;
  int path;  // the argument that is a path, -1 for none
  unsigned traits;
};

constexpr std::array descriptions{
    Description{SYS_open, "open", 0, opens | changes | grows | waits},
    Description{SYS_openat, "openat", 1, opens | changes | grows | waits},
    Description{SYS_openat2, "openat2", 1, opens | changes | grows | waits},
    Description{SYS_creat, "creat", 0, opens | changes | grows | waits},
    Description{SYS_close, "close", -1, waits},
    Description{SYS_read, "read", -1, transfers | waits},
    Description{SYS_pread64, "pread", -1, transfers | waits},
    Description{SYS_readv, "readv", -1, transfers | waits},
    Description{SYS_preadv, "preadv", -1, transfers | waits},
    Description{SYS_write, "write", -1, transfers | changes | grows | waits},
    Description{SYS_pwrite64, "pwrite", -1, transfers | changes | grows | waits},
    Description{SYS_writev, "writev", -1, transfers | changes | grows | waits},
    Description{SYS_pwritev, "pwritev", -1, transfers | changes | grows | waits},
    Description{SYS_pwritev2, "pwritev2", -1, transfers | changes | grows | waits},
    Description{SYS_sendfile, "sendfile", -1, changes | grows},
    Description{SYS_copy_file_range, "copy_file_range", -1, changes | grows},
    Description{SYS_fsync, "fsync", -1, changes | grows | waits},
    Description{SYS_fdatasync, "fdatasync", -1, changes | grows | waits},
    Description{SYS_sync_file_range, "sync_file_range", -1, 0},
    Description{SYS_truncate, "truncate", 0, changes | grows | waits},
    Description{SYS_ftruncate, "ftruncate", -1, changes | grows | waits},
    Description{SYS_fallocate, "fallocate", -1, changes | grows | waits},
    Description{SYS_mmap, "mmap", -1, 0},
    Description{SYS_rename, "rename", 0, changes | grows | waits},
    Description{SYS_renameat, "renameat", 1, changes | grows | waits},
    Description{SYS_renameat2, "renameat2", 1, changes | grows | waits},
    Description{SYS_link, "link", 0, changes | grows | waits},
    Description{SYS_linkat, "linkat", 1, changes | grows | waits},
    Description{SYS_symlink, "symlink", 1, changes | grows},
    Description{SYS_symlinkat, "symlinkat", 2, changes | grows},
    Description{SYS_unlink, "unlink", 0, changes | waits},
    Description{SYS_unlinkat, "unlinkat", 1, changes},
    Description{SYS_mkdir, "mkdir", 0, changes | grows},
    Description{SYS_mkdirat, "mkdirat", 1, changes | grows},
    Description{SYS_rmdir, "rmdir", 0, changes},
    Description{SYS_chmod, "chmod", 0, changes},
    Description{SYS_fchmod, "fchmod", -1, changes | waits},
    Description{SYS_fchmodat, "fchmodat", 1, changes},
    Description{SYS_chown, "chown", 0, changes},
    Description{SYS_fchown, "fchown", -1, changes | waits},
    Description{SYS_fchownat, "fchownat", 1, changes},
    Description{SYS_fgetxattr, "fgetxattr", -1, 0},
    Description{SYS_fsetxattr, "fsetxattr", -1, 0},
    Description{SYS_fremovexattr, "fremovexattr", -1, 0},
    Description{SYS_flistxattr, "flistxattr", -1, 0},
    Description{SYS_getxattr, "getxattr", 0, 0},
    Description{SYS_flock, "flock", -1, waits},
    Description{SYS_fcntl, "fcntl", -1, 0},
    Description{SYS_stat, "stat", 0, 0},
    Description{SYS_lstat, "lstat", 0, 0},
    Description{SYS_fstat, "fstat", -1, 0},
    Description{SYS_newfstatat, "fstatat", 1, 0},
    Description{SYS_statx, "statx", 1, 0},
    Description{SYS_statfs, "statfs", 0, 0},
    Description{SYS_fstatfs, "fstatfs", -1, 0},
    Description{SYS_access, "access", 0, 0},
    Description{SYS_faccessat, "faccessat", 1, 0},
    Description{SYS_faccessat2, "faccessat2", 1, 0},
    Description{SYS_readlink, "readlink", 0, 0},
    Description{SYS_readlinkat, "readlinkat", 1, 0},
    Description{SYS_getdents64, "getdents", -1, 0},
    Description{SYS_lseek, "lseek", -1, 0},
};

const Description* find(long number) {
  const auto* const found = std::ranges::find(descriptions, number, &Description::number);
  return found == descriptions.end() ? nullptr : found;
}

bool has(const SystemCall& call, unsigned trait) {
  const Description* const found = find(call.number);
  return found != nullptr && (found->traits & trait) != 0;
}

bool isOneOf(const SystemCall& call, std::initializer_list<long> numbers) {
  return std::ranges::find(numbers, call.number) != numbers.end();
}

}  // namespace

const char* nameOf(Fault fault) {
  switch (fault) {
    case Fault::ioError:
      return "EIO";
    case Fault::ioErrorOn:
      return "EIO-from-then-on";
    case Fault::noSpace:
      return "ENOSPC";
    case Fault::noQuota:
      return "EDQUOT";
    case Fault::interrupted:
      return "EINTR";
    case Fault::noFile:
      return "EMFILE";
    case Fault::partly:
      return "short";
    case Fault::killBefore:
      return "kill-before";
    case Fault::killAfter:
      return "kill-after";
  }
  return "?";
}

std::string nameOf(const SystemCall& call) {
  const Description* const found = find(call.number);
  return found == nullptr ? std::to_string(call.number) : found->name;
}

bool changesFiles(const SystemCall& call) {
  return has(call, changes);
}

bool applies(Fault fault, const SystemCall& call) {
  switch (fault) {
    case Fault::noSpace:
    case Fault::noQuota:
      return has(call, grows);
    case Fault::noFile:
      return has(call, opens);
    case Fault::partly:
      return has(call, transfers) && call.arguments[2] > 1;
    default:
      return true;
  }
}

bool mayBeInterrupted(const SystemCall& call) {
  return has(call, waits);
}

bool isEnginesOwn(const SystemCall& call) {
  constexpr std::uint64_t headSize = 152;
  if (call.number == SYS_pread64) return call.arguments[2] == headSize;
  if (call.number != SYS_openat) return isOneOf(call, {SYS_pwrite64, SYS_pwritev, SYS_writev});
  const auto flags = static_cast<int>(call.arguments[2]);
  return (flags & O_ACCMODE) != O_RDONLY && (flags & (O_EXCL | O_DIRECTORY)) == 0;
}

bool syncs(const SystemCall& call) {
  return isOneOf(call, {SYS_fsync, SYS_fdatasync});
}

bool isStep(const SystemCall& call) {
  return isOneOf(call, {SYS_rename, SYS_renameat2, SYS_link, SYS_fchmod});
}

std::vector<long> tracedNumbers() {
  std::vector<long> numbers;
  for (const Description& description : descriptions) numbers.push_back(description.number);
  return numbers;
}

int pathArgument(const SystemCall& call) {
  const Description* const found = find(call.number);
  return found == nullptr ? -1 : found->path;
}

bool touchesFile(const SystemCall& call) {
  constexpr std::uint32_t none = 0xFFFFFFFF;
  if (call.number == SYS_mmap) return static_cast<std::uint32_t>(call.arguments[4]) != none;
  if (call.number != SYS_fcntl) return true;
  const auto command = static_cast<int>(call.arguments[1]);
  return command == F_SETLK || command == F_SETLKW || command == F_OFD_SETLK ||
         command == F_OFD_SETLKW;
}

bool isStream(const SystemCall& call) {
  return isOneOf(call, {SYS_read, SYS_write, SYS_writev, SYS_close, SYS_fstat}) &&
         call.arguments[0] <= 2;
}

}  // namespace orx::faults
