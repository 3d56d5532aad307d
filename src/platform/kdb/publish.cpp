#include "platform/kdb/publish.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/file.h"
#include "platform/file_rights.h"
#include "platform/interruption.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_file.h"
#include "platform/run_progress.h"

namespace orx::kdb {

namespace {

constexpr const char* successorSuffix = ".orx-new";
constexpr const char* replacedSuffix = ".orx-old";
constexpr const char* previousSuffix = ".orx-previous";

int syncWithRights(int successorFd, int databaseFd) {
  if (const int error = syncFile(successorFd); error != 0) return error;
  FileRights rights;
  int error = readRights(databaseFd, rights);
  if (error == 0) error = giveRights(successorFd, rights, unpublishedMark);
  if (error == 0) error = syncFile(successorFd);
  // The mark of its own publishing could still be on the disk, and the next run would take the
  // replaced database for a successor.
  return error == 0 ? syncFile(databaseFd) : error;
}

// Somebody may have cut the successor while it was synced.
Outcome checkWhole(int fd) {
  UniqueFd same(::fcntl(fd, F_DUPFD_CLOEXEC, 0));
  if (!same.valid()) return outcomeOfErrno(errno);
  std::shared_ptr<const TreeFile> tree;
  const Outcome outcome = TreeFile::open(std::move(same), tree);
  return outcome == notADatabase ? inputOutputError : outcome;
}

bool cannotBeDone(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
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

bool takeLinkBack(const DatabasePaths& paths, const std::string& other) {
  return linkFile(paths.database, other) == 0 &&
         renameFile(paths.replaced, paths.database, false) == 0;
}

// The old database is on disk under a further name before it loses its own, and the generation
// before it keeps its name until the change is made. A failure as above.
int replaceByLink(const DatabasePaths& paths, const std::string& other, CriticalStep& step) {
  int error = linkFile(paths.database, paths.replaced);
  if (error == EPERM || cannotBeDone(error)) return EOPNOTSUPP;
  if (error != 0) return error;
  error = syncDirectory(paths.directory);
  if (error == 0) error = renameFile(other, paths.database, false);
  if (error != 0) {
    (void)removeFile(paths.replaced);
    return error;
  }
  error = syncDirectory(paths.directory);
  if (error == 0) return 0;
  if (!takeLinkBack(paths, other)) step.notePublished();
  (void)syncDirectory(paths.directory);
  return error;
}

struct Replacement {
  int error = 0;
  std::string left;  // the name that the replaced database has now
};

// Gives NAME to the file `other`. Without a mark, what an exchange leaves could not be told from a
// successor.
Replacement replace(const DatabasePaths& paths, const std::string& other, bool preferExchange,
                    CriticalStep& step) {
  Replacement made;
  for (const bool exchange : {preferExchange, !preferExchange}) {
    made.left = exchange ? other : paths.replaced;
    made.error = exchange ? exchangeForGood(paths, other, step) : replaceByLink(paths, other, step);
    if (!cannotBeDone(made.error)) return made;
  }
  made.error = EOPNOTSUPP;
  return made;
}

// The change itself is made: what fails here, the next run makes up for. Until the directory keeps
// the last name, the mark tells that run what NAME.orx-new is.
void settlePublished(const DatabasePaths& paths, const std::string& left, int successorFd) {
  if (makePrevious(paths, left) == 0) (void)clearMark(successorFd);
}

}  // namespace

DatabasePaths DatabasePaths::of(const std::string& database) {
  return {database, database + successorSuffix, database + replacedSuffix,
          database + previousSuffix, directoryOf(database)};
}

bool DatabasePaths::namesFit() const {
  const auto slash = previous.rfind('/');
  const std::size_t length =
      slash == std::string::npos ? previous.size() : previous.size() - slash - 1;
  return length <= NAME_MAX;
}

bool DatabasePaths::isOfAnother() const {
  return database.ends_with(successorSuffix) || database.ends_with(replacedSuffix) ||
         database.ends_with(previousSuffix);
}

Outcome publishReplacement(const DatabasePaths& paths, int successorFd, int databaseFd) {
  runProgress().enter("syncing");
  int error = syncWithRights(successorFd, databaseFd);
  bool marked = false;
  if (error == 0) error = isMarked(successorFd, marked);
  runProgress().enter("publishing");
  CriticalStep step;
  if (error == 0) error = checkLeadsTo(paths.database, databaseFd, EBUSY);
  if (error == 0) error = checkLeadsTo(paths.successor, successorFd, EIO);
  if (error != 0) return outcomeOfErrno(error);
  if (const Outcome outcome = checkWhole(successorFd); !outcome.ok()) return outcome;
  const Replacement made = replace(paths, paths.successor, marked, step);
  if (made.error != 0) return outcomeOfErrno(made.error);
  step.notePublished();
  settlePublished(paths, made.left, successorFd);
  return succeeded;
}

Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode) {
  runProgress().enter("syncing");
  int error = syncFile(successorFd);
  if (error == 0) error = setMode(successorFd, mode | unpublishedMark);
  if (error == 0) error = syncFile(successorFd);
  if (error != 0) return outcomeOfErrno(error);
  CriticalStep step;
  if (const Outcome outcome = checkWhole(successorFd); !outcome.ok()) return outcome;
  error = renameFile(paths.successor, paths.database, true);
  if (error == EEXIST) return duplicateKey;
  if (error != 0) return outcomeOfErrno(error);
  error = syncDirectory(paths.directory);
  // Not before: without the mark, and with the name lost in a power failure, nobody could tell what
  // it is.
  if (error == 0) (void)clearMark(successorFd);
  const bool takenBack = error != 0 && renameFile(paths.database, paths.successor, true) == 0;
  if (!takenBack) step.notePublished();
  return outcomeOfErrno(error);
}

Outcome exchangeGenerations(const DatabasePaths& paths, int databaseFd, int previousFd) {
  FileRights rights;
  int error = readRights(databaseFd, rights);
  if (error == 0) error = giveRights(previousFd, rights, 0);
  if (error == 0) error = syncFile(previousFd);
  CriticalStep step;
  if (error == 0) error = checkLeadsTo(paths.database, databaseFd, EBUSY);
  if (error == 0) error = checkLeadsTo(paths.previous, previousFd, EBUSY);
  if (error != 0) return outcomeOfErrno(error);
  const Replacement made = replace(paths, paths.previous, true, step);
  if (made.error != 0) return outcomeOfErrno(made.error);
  step.notePublished();
  if (made.left != paths.previous) (void)makePrevious(paths, made.left);
  return succeeded;
}

// Where both names lead to one file, renaming does nothing and the further one has to be removed.
int makePrevious(const DatabasePaths& paths, const std::string& from) {
  if (const int error = renameFile(from, paths.previous, false); error != 0) return error;
  const int error = removeFile(from);
  return error == 0 || error == ENOENT ? syncDirectory(paths.directory) : error;
}

}  // namespace orx::kdb
