#include "platform/kdb/leftover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include "platform/file.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_file.h"
#include "platform/kdb_obstacle.h"

namespace orx::kdb {

namespace {

enum class Left { successor, replaced, uncertain, foreign };

// A young successor is empty or begins with zeros.
int isWithoutContent(int fd, bool& without) {
  std::array<std::uint8_t, 16> first{};
  if (readAt(fd, first.data(), first.size(), 0) < 0) return errno;
  without = std::ranges::all_of(first, [](std::uint8_t byte) { return byte == 0; });
  return 0;
}

// Of the file `fd` with the name NAME.orx-new.
int classify(int fd, int databaseFd, Left& left) {
  bool published = false;
  bool marked = false;
  bool withoutContent = false;
  int error = databaseFd < 0 ? 0 : isMarked(databaseFd, published);
  if (error == 0) error = isMarked(fd, marked);
  if (error == 0) error = isWithoutContent(fd, withoutContent);
  if (error != 0) return error;
  if (marked || withoutContent) {
    left = Left::successor;
  } else if (!TreeFile::beginsLikeTree(fd)) {
    left = Left::foreign;
  } else {
    left = published ? Left::replaced : Left::uncertain;
  }
  return 0;
}

UniqueFd openLeftover(const std::string& path) {
  return openFile(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
}

// What has the name `path`; without a link, st_nlink 0, when it is free. EEXIST for a directory
// and, with `onlyFiles`, for anything else that is no regular file.
int look(const std::string& path, bool onlyFiles, struct stat& found) {
  found = {};
  if (::lstat(path.c_str(), &found) != 0) return errno == ENOENT ? 0 : errno;
  return S_ISDIR(found.st_mode) || (onlyFiles && !S_ISREG(found.st_mode)) ? EEXIST : 0;
}

Outcome outcomeOfLook(int error) {
  return error == EEXIST ? duplicateKey : outcomeOfErrno(error);
}

Outcome settleSuccessor(const DatabasePaths& paths, int databaseFd) {
  struct stat found {};
  if (const int error = look(paths.successor, false, found); error != 0) {
    return outcomeOfLook(error);
  }
  if (found.st_nlink == 0) return succeeded;
  if (!S_ISREG(found.st_mode)) return outcomeOfErrno(removeFile(paths.successor));
  const UniqueFd left = openLeftover(paths.successor);
  if (!left.valid()) return outcomeOfErrno(errno);
  const bool isSecondName = databaseFd >= 0 && isSameFile(left.get(), databaseFd);
  if (isSecondName) return outcomeOfErrno(removeFile(paths.successor));
  int error = lockFile(left.get());
  if (error == 0) error = checkLeadsTo(paths.successor, left.get(), EWOULDBLOCK);
  Left kind{};
  if (error == 0) error = classify(left.get(), databaseFd, kind);
  if (error != 0) return outcomeOfErrno(error);
  if (kind == Left::foreign || kind == Left::uncertain) return duplicateKey;
  return outcomeOfErrno(kind == Left::replaced ? makePrevious(paths, paths.successor)
                                               : removeFile(paths.successor));
}

// Without a database it can only be one that somebody moved away, and is kept.
Outcome settleReplaced(const DatabasePaths& paths, int databaseFd) {
  struct stat found {};
  if (const int error = look(paths.replaced, true, found); error != 0) return outcomeOfLook(error);
  if (found.st_nlink == 0) return succeeded;
  const UniqueFd left = openLeftover(paths.replaced);
  if (!left.valid()) return outcomeOfErrno(errno);
  if (databaseFd < 0) return duplicateKey;
  if (isSameFile(left.get(), databaseFd)) return outcomeOfErrno(removeFile(paths.replaced));
  if (!TreeFile::beginsLikeTree(left.get())) return duplicateKey;
  return outcomeOfErrno(makePrevious(paths, paths.replaced));
}

// Attributes that keep a name from being changed; those that the file system does not tell of are
// found when it is tried.
int checkNameCanChange(const std::string& path, const struct stat& directory) {
  constexpr std::uint64_t kept = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;
  struct statx file {};
  if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_UID, &file) != 0) {
    return errno == ENOENT ? 0 : errno;
  }
  if ((file.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return EBUSY;
  if ((file.stx_attributes & kept) != 0) return EPERM;
  const uid_t user = ::geteuid();
  const bool isProtected = (directory.st_mode & S_ISVTX) != 0 && user != 0 &&
                           user != directory.st_uid && user != file.stx_uid;
  return isProtected ? EPERM : 0;
}

ObstacleKind obstacleOfKind(Left kind) {
  switch (kind) {
    case Left::foreign:
      return ObstacleKind::other;
    case Left::uncertain:
      return ObstacleKind::uncertain;
    case Left::replaced:
      return ObstacleKind::replaced;
    case Left::successor:
      break;
  }
  return ObstacleKind::none;
}

// What a regular file that is not the previous generation is.
ObstacleKind obstacleInFile(const DatabasePaths& paths, const std::string& path, int databaseFd) {
  const UniqueFd left = openLeftover(path);
  if (!left.valid()) return ObstacleKind::fixed;
  if (databaseFd >= 0 && isSameFile(left.get(), databaseFd)) return ObstacleKind::none;
  Left kind = TreeFile::beginsLikeTree(left.get()) ? Left::replaced : Left::foreign;
  const bool isSuccessor = path == paths.successor;
  if (isSuccessor && classify(left.get(), databaseFd, kind) != 0) return ObstacleKind::none;
  return obstacleOfKind(kind);
}

ObstacleKind obstacleAt(const DatabasePaths& paths, const std::string& path, int databaseFd) {
  struct stat directory {};
  struct stat found {};
  const bool onlyFiles = path == paths.replaced;
  if (::stat(paths.directory.c_str(), &directory) != 0) return ObstacleKind::none;
  if (look(path, onlyFiles, found) == EEXIST) return ObstacleKind::other;
  if (checkNameCanChange(path, directory) != 0) return ObstacleKind::fixed;
  const bool matters =
      S_ISREG(found.st_mode) && (path == paths.successor || path == paths.replaced);
  return matters ? obstacleInFile(paths, path, databaseFd) : ObstacleKind::none;
}

Obstacle firstObstacle(const std::string& name, bool (*isWanted)(ObstacleKind kind)) {
  const DatabasePaths paths = DatabasePaths::of(resolvePath(name).value_or(name));
  const UniqueFd database = openFile(paths.database, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  for (const std::string* const path :
       {&paths.previous, &paths.replaced, &paths.successor, &paths.database}) {
    const ObstacleKind kind = obstacleAt(paths, *path, database.get());
    if (isWanted(kind)) return {kind, *path};
  }
  return {};
}

}  // namespace

Outcome settleLeftover(const DatabasePaths& paths, int databaseFd) {
  struct stat previous {};
  if (const int error = look(paths.previous, false, previous); error != 0) {
    return outcomeOfLook(error);  // nothing could be published
  }
  const Outcome outcome = settleReplaced(paths, databaseFd);
  return outcome.ok() ? settleSuccessor(paths, databaseFd) : outcome;
}

Outcome checkNamesCanChange(const DatabasePaths& paths) {
  struct stat directory {};
  if (::stat(paths.directory.c_str(), &directory) != 0) return outcomeOfErrno(errno);
  for (const std::string* const path :
       {&paths.database, &paths.previous, &paths.replaced, &paths.successor}) {
    if (const int error = checkNameCanChange(*path, directory); error != 0) {
      return outcomeOfErrno(error);
    }
  }
  return succeeded;
}

Obstacle obstacleOf(const std::string& name) {
  return firstObstacle(name, [](ObstacleKind kind) { return kind != ObstacleKind::none; });
}

Obstacle replacedBy(const std::string& name) {
  return firstObstacle(name, [](ObstacleKind kind) { return kind == ObstacleKind::replaced; });
}

}  // namespace orx::kdb
