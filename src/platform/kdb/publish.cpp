#include "platform/kdb/publish.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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
  int error = setModeAndOwner(successorFd, database);
  if (error == 0) error = syncFile(successorFd);
  // The mark of its own publishing could still be on the disk, and the next run would take the
  // replaced database for a successor.
  return error == 0 ? syncFile(databaseFd) : error;
}

// The directory keeps the exchange, or it is taken back. A failure that leaves the exchange made
// all the same is noted as published.
int exchangeForGood(const DatabasePaths& paths, const std::string& other, CriticalStep& step) {
  if (const int error = exchangeNames(paths.database, other); error != 0) return error;
  const int error = syncDirectory(paths.directory);
  if (error == 0) return 0;
  if (exchangeNames(paths.database, other) != 0) step.notePublished();
  (void)syncDirectory(paths.directory);  // whichever it is now
  return error;
}

// The old database is on disk under its second name before it loses the first. A failure as above.
int replaceByLink(const DatabasePaths& paths, CriticalStep& step) {
  int error = removeFile(paths.previous);
  if (error == ENOENT) error = 0;
  if (error == 0) error = linkFile(paths.database, paths.previous);
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) error = renameFile(paths.successor, paths.database, false);
  if (error != 0) return error;
  error = syncDirectory(paths.directory);
  if (error == 0) return 0;
  if (renameFile(paths.previous, paths.database, false) != 0) step.notePublished();
  (void)syncDirectory(paths.directory);
  return error;
}

// Makes the replaced database, now NAME.orx-new, the previous generation, for good. Where that is
// the same file already, renaming does nothing and the second name has to be removed.
int makePrevious(const DatabasePaths& paths) {
  if (const int error = renameFile(paths.successor, paths.previous, false); error != 0)
    return error;
  const int error = removeFile(paths.successor);
  return error == 0 || error == ENOENT ? syncDirectory(paths.directory) : error;
}

// Without a mark, what an exchange leaves could not be told from a successor.
int replace(const DatabasePaths& paths, bool marked, CriticalStep& step) {
  const int error =
      marked ? exchangeForGood(paths, paths.successor, step) : replaceByLink(paths, step);
  const bool unsupported =
      error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || (!marked && error == EPERM);
  if (!unsupported) return error;
  return marked ? replaceByLink(paths, step) : exchangeForGood(paths, paths.successor, step);
}

// The change itself is made: what fails here, the next run makes up for. Until the directory keeps
// the last name, the mark tells that run what NAME.orx-new is. After a link there is none.
void settlePublished(const DatabasePaths& paths, int successorFd) {
  const int error = makePrevious(paths);
  if (error == 0 || error == ENOENT) (void)clearMark(successorFd);
}

// An exchange leaves the published database marked and the replaced one without a mark. A successor
// can lose its mark, in a copy of the directory, but then the database has none either.
int isReplacedDatabase(int fd, int databaseFd, bool& replaced) {
  bool published = false;
  bool marked = false;
  int error = databaseFd < 0 ? 0 : isMarked(databaseFd, published);
  if (error == 0) error = isMarked(fd, marked);
  replaced = published && !marked && TreeFile::beginsLikeTree(fd);
  return error;
}

// A file of somebody else's, which happens to have the name. A young successor that lost its mark
// is empty or begins with zeros.
int isForeign(int fd, bool& foreign) {
  bool marked = false;
  if (const int error = isMarked(fd, marked); error != 0) return error;
  std::array<std::uint8_t, 16> first{};
  if (readAt(fd, first.data(), first.size(), 0) < 0) return errno;
  const bool isZero = std::ranges::all_of(first, [](std::uint8_t byte) { return byte == 0; });
  foreign = !marked && !isZero && !TreeFile::beginsLikeTree(fd);
  return 0;
}

bool isSameFile(int a, int b) {
  struct stat fileA {};
  struct stat fileB {};
  return ::fstat(a, &fileA) == 0 && ::fstat(b, &fileB) == 0 && sameFile(fileA, fileB);
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
  runProgress().enter("syncing");
  int error = syncWithMode(successorFd, databaseFd);
  bool marked = false;
  if (error == 0) error = isMarked(successorFd, marked);
  runProgress().enter("publishing");
  CriticalStep step;
  if (error == 0) error = checkLeadsTo(paths.successor, successorFd, EIO);
  if (error == 0) error = replace(paths, marked, step);
  if (error != 0) return outcomeOfErrno(error);
  step.notePublished();
  settlePublished(paths, successorFd);
  return succeeded;
}

Outcome settleLeftover(const DatabasePaths& paths, int databaseFd) {
  struct stat found {};
  if (::lstat(paths.successor.c_str(), &found) != 0) {
    return errno == ENOENT ? succeeded : outcomeOfErrno(errno);
  }
  if (S_ISDIR(found.st_mode)) return duplicateKey;
  if (!S_ISREG(found.st_mode)) return outcomeOfErrno(removeFile(paths.successor));
  const UniqueFd left = openFile(paths.successor, O_RDONLY | O_NOFOLLOW);
  if (!left.valid()) return outcomeOfErrno(errno);
  const bool isSecondName = databaseFd >= 0 && isSameFile(left.get(), databaseFd);
  if (isSecondName) return outcomeOfErrno(removeFile(paths.successor));
  int error = lockFile(left.get());
  if (error == 0) error = checkLeadsTo(paths.successor, left.get(), EWOULDBLOCK);
  if (error != 0) return outcomeOfErrno(error);
  bool foreign = false;
  error = isForeign(left.get(), foreign);
  if (error != 0) return outcomeOfErrno(error);
  if (foreign) return duplicateKey;
  bool replaced = false;
  error = isReplacedDatabase(left.get(), databaseFd, replaced);
  if (error == 0) error = replaced ? makePrevious(paths) : removeFile(paths.successor);
  return outcomeOfErrno(error);
}

Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode) {
  runProgress().enter("syncing");
  int error = syncFile(successorFd);
  if (error == 0) error = setMode(successorFd, mode | unpublishedMark);
  if (error == 0) error = syncFile(successorFd);
  CriticalStep step;
  if (error == 0) error = renameFile(paths.successor, paths.database, true);
  if (error == EEXIST) return duplicateKey;
  if (error != 0) return outcomeOfErrno(error);
  (void)clearMark(successorFd);
  error = syncDirectory(paths.directory);
  const bool takenBack = error != 0 && renameFile(paths.database, paths.successor, true) == 0;
  if (!takenBack) step.notePublished();
  return outcomeOfErrno(error);
}

Outcome exchangeGenerations(const DatabasePaths& paths) {
  CriticalStep step;
  const int error = exchangeForGood(paths, paths.previous, step);
  if (error == 0) step.notePublished();
  return outcomeOfErrno(error);
}

}  // namespace orx::kdb
