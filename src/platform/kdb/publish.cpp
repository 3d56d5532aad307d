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

// Steps on names that are taken back in reverse order unless they are kept.
class NameExchange {
 public:
  NameExchange() = default;
  NameExchange(const NameExchange&) = delete;
  NameExchange& operator=(const NameExchange&) = delete;
  ~NameExchange() { takeBack(); }

  int swap(const std::string& first, const std::string& second) {
    const int error = exchangeNames(first, second);
    if (error == 0) undo_[count_++] = {&first, &second, true};
    return error;
  }
  int move(const std::string& from, const std::string& to) {
    const int error = renameFile(from, to, true);
    if (error == 0) undo_[count_++] = {&to, &from, false};
    return error;
  }
  void keep() { count_ = 0; }

 private:
  struct Step {
    const std::string* from;
    const std::string* to;
    bool swapped;
  };
  void takeBack() {
    for (; count_ > 0; --count_) {
      const Step& step = undo_[count_ - 1];
      (void)(step.swapped ? exchangeNames(*step.from, *step.to)
                          : renameFile(*step.from, *step.to, true));
    }
  }
  Step undo_[4] = {};
  int count_ = 0;
};

int syncWithMode(int successorFd, int databaseFd) {
  if (const int error = syncFile(successorFd); error != 0) return error;
  struct stat database {};
  if (::fstat(databaseFd, &database) != 0) return errno;
  if (const int error = setModeAndOwner(successorFd, database); error != 0) return error;
  return syncFile(successorFd);
}

int nameAsPrevious(const DatabasePaths& paths, NameExchange& names) {
  const int error = names.move(paths.successor, paths.previous);
  return error == EEXIST ? names.swap(paths.successor, paths.previous) : error;
}

bool cannotExchange(int error) {
  return error == EINVAL || error == ENOSYS;
}

// For file systems without an exchange: the old database gets its second name first, so that the
// name of the database is never absent.
int replaceByLink(const DatabasePaths& paths) {
  if (const int error = removeFile(paths.previous); error != 0 && error != ENOENT) return error;
  if (const int error = linkFile(paths.database, paths.previous); error != 0) return error;
  return renameFile(paths.successor, paths.database, false);
}

int replace(const DatabasePaths& paths) {
  NameExchange names;
  int error = nameAsPrevious(paths, names);
  if (error == 0) error = names.swap(paths.database, paths.previous);
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) names.keep();
  return error;
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
  if (cannotExchange(error)) {
    error = replaceByLink(paths);
    if (error == 0) error = syncDirectory(paths.directory);
  }
  if (error != 0) return outcomeOfErrno(error);
  (void)removeFile(paths.successor);  // the generation before the previous one, if there was one
  return succeeded;
}

Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode) {
  int error = syncFile(successorFd);
  if (error == 0 && ::fchmod(successorFd, mode) != 0) error = errno;
  if (error == 0) error = syncFile(successorFd);
  if (error != 0) return outcomeOfErrno(error);
  NameExchange names;
  error = names.move(paths.successor, paths.database);
  if (error == EEXIST) return duplicateKey;
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) names.keep();
  return outcomeOfErrno(error);
}

Outcome exchangeGenerations(const DatabasePaths& paths) {
  NameExchange names;
  int error = names.swap(paths.database, paths.previous);
  if (error == 0) error = syncDirectory(paths.directory);
  if (error == 0) names.keep();
  return outcomeOfErrno(error);
}

}  // namespace orx::kdb
