#include "platform/kdb/publish.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file.h"
#include "platform/interruption.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_file.h"
#include "platform/run_progress.h"

namespace orx::kdb {

namespace {

constexpr const char* successorSuffix = ".orx-new";
constexpr const char* previousSuffix = ".orx-previous";

int syncWithMode(int successorFd, int databaseFd) {
  if (const int error = syncFile(successorFd); error != 0) return error;
  struct stat database {};
  if (::fstat(databaseFd, &database) != 0) return errno;
  database.st_mode |= unpublishedMark;
  if (const int error = setModeAndOwner(successorFd, database); error != 0) return error;
  return syncFile(successorFd);
}

bool cannotExchange(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

// The directory keeps the exchange, or it is taken back.
int exchangeForGood(const DatabasePaths& paths, const std::string& other) {
  if (const int error = exchangeNames(paths.database, other); error != 0) return error;
  const int error = syncDirectory(paths.directory);
  if (error != 0) (void)exchangeNames(paths.database, other);
  return error;
}

// The old database is on disk under its second name before it loses the first.
int replaceByLink(const DatabasePaths& paths) {
  int error = removeFile(paths.previous);
  if (error == ENOENT) error = 0;
  if (error == 0) error = linkFile(paths.database, paths.previous);
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) error = renameFile(paths.successor, paths.database, false);
  return error == 0 ? syncDirectory(paths.directory) : error;
}

// The change itself is made: a failure here is made up for by the next run.
void finishExchange(const DatabasePaths& paths, int successorFd) {
  (void)renameFile(paths.successor, paths.previous, false);
  (void)clearMark(successorFd);
  (void)syncDirectory(paths.directory);
}

bool keepsMarks(const std::string& directory) {
  const UniqueFd probe = openFile(directory, O_TMPFILE | O_RDWR, S_IRUSR | unpublishedMark);
  struct stat made {};
  return probe.valid() && ::fstat(probe.get(), &made) == 0 && (made.st_mode & unpublishedMark) != 0;
}

bool isReplacedDatabase(const DatabasePaths& paths, int fd) {
  struct stat left {};
  return ::fstat(fd, &left) == 0 && (left.st_mode & unpublishedMark) == 0 &&
         TreeFile::beginsLikeTree(fd) && keepsMarks(paths.directory);
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

int clearMark(int fd) {
  struct stat file {};
  if (::fstat(fd, &file) != 0) return errno;
  if ((file.st_mode & unpublishedMark) == 0) return 0;
  return ::fchmod(fd, file.st_mode & 07777 & ~unpublishedMark) == 0 ? 0 : errno;
}

Outcome publishReplacement(const DatabasePaths& paths, int successorFd, int databaseFd) {
  runProgress().enter("syncing");
  int error = syncWithMode(successorFd, databaseFd);
  runProgress().enter("publishing");
  CriticalStep step;
  if (error == 0) error = exchangeForGood(paths, paths.successor);
  if (error == 0) {
    finishExchange(paths, successorFd);
  } else if (cannotExchange(error)) {
    error = replaceByLink(paths);
    if (error == 0) (void)clearMark(successorFd);
  }
  if (error == 0) step.notePublished();
  return outcomeOfErrno(error);
}

Outcome settleLeftover(const DatabasePaths& paths) {
  struct stat found {};
  if (::lstat(paths.successor.c_str(), &found) != 0) {
    return errno == ENOENT ? succeeded : outcomeOfErrno(errno);
  }
  UniqueFd left;
  if (S_ISREG(found.st_mode)) left = openFile(paths.successor, O_RDONLY | O_NOFOLLOW);
  if (left.valid() && (lockFile(left.get()) != 0 || !leadsTo(paths.successor, left.get()))) {
    return inUse;
  }
  const bool isPrevious = left.valid() && isReplacedDatabase(paths, left.get());
  return outcomeOfErrno(isPrevious ? renameFile(paths.successor, paths.previous, false)
                                   : removeFile(paths.successor));
}

Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode) {
  runProgress().enter("syncing");
  int error = syncFile(successorFd);
  if (error == 0 && ::fchmod(successorFd, mode | unpublishedMark) != 0) error = errno;
  if (error == 0) error = syncFile(successorFd);
  CriticalStep step;
  if (error == 0) error = renameFile(paths.successor, paths.database, true);
  if (error == EEXIST) return duplicateKey;
  if (error != 0) return outcomeOfErrno(error);
  (void)clearMark(successorFd);
  error = syncDirectory(paths.directory);
  if (error != 0) (void)renameFile(paths.database, paths.successor, true);
  if (error == 0) step.notePublished();
  return outcomeOfErrno(error);
}

Outcome exchangeGenerations(const DatabasePaths& paths) {
  CriticalStep step;
  const int error = exchangeForGood(paths, paths.previous);
  if (error == 0) step.notePublished();
  return outcomeOfErrno(error);
}

}  // namespace orx::kdb
