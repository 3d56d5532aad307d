#include "platform/kdb/failure.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <cstdint>

namespace orx::kdb {

namespace {
constexpr std::uint64_t batchBytes = std::uint64_t{16} * 1024 * 1024;
}

Outcome outcomeOfErrno(int error) {
  switch (error) {
    case 0:
      return succeeded;
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
      return recordNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return noPermission;
    case ENAMETOOLONG:
      return {Code::badArgument, Reason::length};
    case EISDIR:
      return notADatabase;
    case EWOULDBLOCK:
    case ETXTBSY:
    case EBUSY:
      return inUse;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return noSpace;
    case EMFILE:
    case ENFILE:
      return tooManyFiles;
    case EOPNOTSUPP:
      return notSupported;
    case ENOMEM:
      return noMemory;
    default:
      return inputOutputError;
  }
}

bool isOutOfSpace(int fd) {
  struct statvfs volume {};
  if (::fstatvfs(fd, &volume) == 0) {
    const std::uint64_t available = std::uint64_t{volume.f_bavail} * volume.f_frsize;
    if (available < batchBytes) return true;
  }
  struct stat file {};
  struct rlimit limit {};
  if (::fstat(fd, &file) != 0 || ::getrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
  return limit.rlim_cur != RLIM_INFINITY &&
         static_cast<std::uint64_t>(file.st_size) + batchBytes > limit.rlim_cur;
}

}  // namespace orx::kdb
