#include "platform/kdb/publish.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file.h"
#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

constexpr const char* successorSuffix = ".orx-new";
constexpr const char* previousSuffix = ".orx-previous";

int syncWithMode(int successorFd, int databaseFd) {
  if (const int error = syncFile(successorFd); error != 0) return error;
  struct stat database {};
  if (::fstat(databaseFd, &database) != 0) return errno;
  if (const int error = setModeAndOwner(successorFd, database); error != 0) return error;
  return syncFile(successorFd);
}

int dropPrevious(const DatabasePaths& paths) {
  const int error = removeFile(paths.previous);
  return error == ENOENT ? 0 : error;
}

// The old database is on disk under its second name before it loses the first.
int replaceByLink(const DatabasePaths& paths) {
  int error = linkFile(paths.database, paths.previous);
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) error = renameFile(paths.successor, paths.database, false);
  return error;
}

// For file systems without second names.
int replaceByExchange(const DatabasePaths& paths) {
  const int error = exchangeNames(paths.database, paths.successor);
  return error == 0 ? renameFile(paths.successor, paths.previous, false) : error;
}

int replace(const DatabasePaths& paths) {
  int error = dropPrevious(paths);
  if (error == 0) error = replaceByLink(paths);
  return error == EPERM || error == EOPNOTSUPP ? replaceByExchange(paths) : error;
}

}  // namespace

DatabasePaths DatabasePaths::of(const std::string& database) {
  return {database, database + successorSuffix, database + previousSuffix, directoryOf(database)};
}

bool DatabasePaths::namesFit() const {
  const auto slash = previous.rfind('/');
  const std::size_t length =
      slash == std::string::npos ? previous.size() : previous.size() - slash - 1;
  return length <= NAME_MAX;
}

Outcome publishReplacement(const DatabasePaths& paths, int successorFd, int databaseFd) {
  int error = syncWithMode(successorFd, databaseFd);
  if (error == 0) error = replace(paths);
  if (error != 0) return outcomeOfErrno(error);
  error = syncDirectory(paths.directory);
  if (error != 0) (void)exchangeNames(paths.database, paths.previous);
  return outcomeOfErrno(error);
}

Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode) {
  int error = syncFile(successorFd);
  if (error == 0 && ::fchmod(successorFd, mode) != 0) error = errno;
  if (error == 0) error = syncFile(successorFd);
  if (error == 0) error = renameFile(paths.successor, paths.database, true);
  if (error == EEXIST) return duplicateKey;
  if (error != 0) return outcomeOfErrno(error);
  error = syncDirectory(paths.directory);
  if (error != 0) (void)renameFile(paths.database, paths.successor, true);
  return outcomeOfErrno(error);
}

Outcome exchangeGenerations(const DatabasePaths& paths) {
  int error = exchangeNames(paths.database, paths.previous);
  if (error != 0) return outcomeOfErrno(error);
  error = syncDirectory(paths.directory);
  if (error != 0) (void)exchangeNames(paths.database, paths.previous);
  return outcomeOfErrno(error);
}

}  // namespace orx::kdb
