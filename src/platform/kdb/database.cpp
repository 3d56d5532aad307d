#include "platform/kdb/database.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/file_rights.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/leftover.h"
#include "platform/run_progress.h"

namespace orx::kdb {

namespace {

constexpr int lockAttempts = 100;
constexpr unsigned newFileMode = 0640;

unsigned modeOfNewFile() {
  const mode_t mask = ::umask(0);
  (void)::umask(mask);
  return newFileMode & ~static_cast<unsigned>(mask);
}

bool belongsToGroup(gid_t group) {
  if (group == ::getegid()) return true;
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
  const int count = ::getgroups(static_cast<int>(groups.size()), groups.data());
  groups.resize(static_cast<std::size_t>(std::max(count, 0)));
  return std::find(groups.begin(), groups.end(), group) != groups.end();
}

Outcome checkName(const DatabasePaths& paths) {
  if (!paths.namesFit()) return {Code::badArgument, Reason::length};
  return paths.isOfAnother() ? nameOfAnother : succeeded;
}

// Whatever would stop the run at its end is found before it begins.
Outcome checkPermissions(const DatabasePaths& paths, const struct stat& file) {
  if (::faccessat(AT_FDCWD, paths.database.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
    return outcomeOfErrno(errno);
  }
  if (::faccessat(AT_FDCWD, paths.directory.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
    return outcomeOfErrno(errno);
  }
  const uid_t user = ::geteuid();
  const bool isOwn = user == file.st_uid && belongsToGroup(file.st_gid);
  return user == 0 || isOwn ? checkNamesCanChange(paths) : noPermission;
}

// The rights of the database are given at the end, but what cannot be given is found now.
Outcome prepareRights(int successorFd, int databaseFd) {
  FileRights rights;
  int error = readRights(databaseFd, rights);
  if (error == 0) error = withholdRights(successorFd, rights, unpublishedMark);
  if (error == EINVAL || error == EOPNOTSUPP) return noPermission;
  if (error == 0) copyLabels(databaseFd, successorFd);
  return outcomeOfErrno(error);
}

Outcome openRegularFile(const std::string& path, UniqueFd& fd, struct stat& file) {
  fd = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!fd.valid()) return errno == ENXIO ? notADatabase : outcomeOfErrno(errno);
  if (::fstat(fd.get(), &file) != 0) return outcomeOfErrno(errno);
  return S_ISREG(file.st_mode) ? succeeded : notADatabase;
}

}  // namespace

Outcome Scan::next(const std::uint8_t*& record) {
  if (heldIsDeleted_) {
    deletedBefore_ = held_;
  } else {
    deletedBefore_.reset();
  }
  heldIsDeleted_ = false;
  return snapshot_.next(held_, record);
}

Outcome Database::open(const std::string& name, OpenMode mode,
                       std::unique_ptr<Database>& database) {
  auto opened = std::make_unique<Database>();
  opened->mode_ = mode;
  const Outcome outcome =
      mode == OpenMode::create ? opened->openNew(name) : opened->openExisting(name, mode);
  if (outcome.ok()) database = std::move(opened);
  return outcome;
}

Outcome Database::openExisting(const std::string& name, OpenMode mode) {
  const auto resolved = resolvePath(name);
  if (!resolved.has_value()) return outcomeOfErrno(errno);
  paths_ = DatabasePaths::of(*resolved);
  UniqueFd fd;
  struct stat file {};
  if (const Outcome outcome = openRegularFile(*resolved, fd, file); !outcome.ok()) return outcome;
  if (mode == OpenMode::update) {
    if (const Outcome outcome = checkName(paths_); !outcome.ok()) return outcome;
    if (const Outcome outcome = checkPermissions(paths_, file); !outcome.ok()) return outcome;
    if (const Outcome outcome = lock(fd); !outcome.ok()) return outcome;
  }
  if (const Outcome outcome = TreeFile::open(std::move(fd), base_); !outcome.ok()) return outcome;
  return mode == OpenMode::update ? settleLastRun() : succeeded;
}

// Between opening and locking, another run may have given the name to its successor: a lock on
// anything but the file that has the name is worth nothing.
Outcome Database::lock(UniqueFd& fd) {
  for (int attempt = 0; attempt < lockAttempts; ++attempt) {
    if (const int error = lockFile(fd.get()); error != 0) return outcomeOfErrno(error);
    struct stat locked {};
    struct stat named {};
    if (::fstat(fd.get(), &locked) != 0) return outcomeOfErrno(errno);
    if (::stat(paths_.database.c_str(), &named) != 0) return outcomeOfErrno(errno);
    if (sameFile(locked, named)) return succeeded;
    fd.reset();
    if (const Outcome outcome = openRegularFile(paths_.database, fd, locked); !outcome.ok()) {
      return outcome;
    }
  }
  return inUse;
}

Outcome Database::openNew(const std::string& name) {
  struct stat existing {};
  if (::lstat(name.c_str(), &existing) == 0) return duplicateKey;
  if (errno != ENOENT) return outcomeOfErrno(errno);
  paths_ = DatabasePaths::of(name);
  if (const Outcome outcome = checkName(paths_); !outcome.ok()) return outcome;
  return Successor::create(paths_, successor_);
}

// What a run that died between its last steps left to do.
Outcome Database::settleLastRun() {
  if (const Outcome outcome = settleLeftover(paths_, base_->fd()); !outcome.ok()) return outcome;
  return outcomeOfErrno(clearMark(base_->fd()));
}

void Database::noteFailure(const Outcome& outcome) {
  lastFailure_ = outcome;
  if (isStorageFailure(outcome.code) && !storageFailure_.has_value()) storageFailure_ = outcome;
}

bool Database::everythingDeleted() const {
  return deleted_.count() == base_->entries();
}

Outcome Database::prepareChange() {
  if (storageFailure_.has_value()) return *storageFailure_;
  if (mode_ == OpenMode::read) return noPermission;
  return successor_ != nullptr ? succeeded : startSuccessor();
}

// What could not be begun is not begun a second time, at the end, without the changes between.
Outcome Database::startSuccessor() {
  const Outcome outcome = makeSuccessor();
  if (!outcome.ok()) storageFailure_ = outcome;
  return outcome;
}

Outcome Database::makeSuccessor() {
  // The directory was there when the database was opened; somebody moved it.
  const Outcome made = Successor::create(paths_, successor_);
  if (!made.ok()) return made == recordNotFound ? inUse : made;
  lookUp_.reset();
  successor_->uncachePrevious(paths_);
  if (const Outcome outcome = prepareRights(successor_->fd(), base_->fd()); !outcome.ok()) {
    return outcome;
  }
  if (everythingDeleted()) return succeeded;
  uncopied_ = std::make_unique<UncopiedRecords>(base_, deleted_);
  return uncopied_->start();
}

// Everything up to `last` is in the successor afterwards.
Outcome Database::copyThrough(const Key& last) {
  return uncopied_ == nullptr ? succeeded : uncopied_->moveTo(*successor_, last);
}

Outcome Database::copyRest() {
  Key highest;
  highest.bytes.fill(0xFF);
  return copyThrough(highest);
}

// Changes that are already in the successor can only be frozen by copying it, into a file without
// a name.
Outcome Database::snapshot(std::unique_ptr<Snapshot>& snapshot) {
  if (storageFailure_.has_value()) return *storageFailure_;
  if (successor_ == nullptr) {
    snapshot = std::make_unique<Snapshot>(base_, deleted_);
    return succeeded;
  }
  UniqueFd fd = openFile(paths_.directory, O_TMPFILE | O_RDWR, 0600);
  if (!fd.valid()) return outcomeOfErrno(errno);
  if (const Outcome outcome = copyRest(); !outcome.ok()) return outcome;
  if (const Outcome outcome = successor_->copyTo(fd.get()); !outcome.ok()) return outcome;
  std::shared_ptr<const TreeFile> copy;
  if (const Outcome outcome = TreeFile::open(std::move(fd), copy); !outcome.ok()) return outcome;
  snapshot = std::make_unique<Snapshot>(copy, KeyRanges());
  return succeeded;
}

Outcome Database::deleteHeld(Scan& scan) {
  if (storageFailure_.has_value()) return *storageFailure_;
  if (mode_ == OpenMode::read) return noPermission;
  if (successor_ != nullptr) return erase(scan.heldKey());
  if (deleted_.contains(scan.heldKey())) return recordNotFound;
  deleted_.add(scan.heldKey(), scan.deletedBefore());
  scan.markHeldDeleted();
  return succeeded;
}

Outcome Database::add(const Key& key, const std::uint8_t* record) {
  if (const Outcome outcome = prepareChange(); !outcome.ok()) return outcome;
  if (uncopied_ != nullptr && uncopied_->takesNew(key)) return uncopied_->add(key, record);
  const Outcome outcome = copyThrough(key);
  return outcome.ok() ? successor_->add(key, record) : outcome;
}

Outcome Database::update(const Key& key, const std::uint8_t* record) {
  if (const auto outcome = updateWithoutChange(key, record)) return *outcome;
  if (const Outcome outcome = prepareChange(); !outcome.ok()) return outcome;
  if (uncopied_ != nullptr && uncopied_->takesChange(key)) return uncopied_->update(key, record);
  const Outcome outcome = copyThrough(key);
  return outcome.ok() ? successor_->update(key, record) : outcome;
}

Outcome Database::erase(const Key& key) {
  if (const Outcome outcome = prepareChange(); !outcome.ok()) return outcome;
  if (uncopied_ != nullptr && uncopied_->takesChange(key)) return uncopied_->erase(key);
  const Outcome outcome = copyThrough(key);
  return outcome.ok() ? successor_->erase(key) : outcome;
}

// What an update answers that has nothing to do, before the first change of a run: where none comes
// there is nothing to publish.
std::optional<Outcome> Database::updateWithoutChange(const Key& key, const std::uint8_t* record) {
  if (mode_ != OpenMode::update || successor_ != nullptr) return std::nullopt;
  if (storageFailure_.has_value()) return *storageFailure_;
  Key found;
  const std::uint8_t* stored = nullptr;
  const Outcome outcome = findInBase(key, found, stored);
  if (outcome == endOfData) return recordNotFound;
  if (!outcome.ok()) return std::nullopt;
  if (found != key) return recordNotFound;
  if (std::memcmp(stored, record, recordSize) != 0) return std::nullopt;
  return succeeded;
}

Outcome Database::findInBase(const Key& key, Key& found, const std::uint8_t*& record) {
  if (lookUp_ == nullptr) lookUp_ = std::make_unique<KeyLookUp>(base_);
  return lookUp_->find(key, deleted_, found, record);
}

Outcome Database::readNext(const Key& key, std::uint8_t* record) {
  if (storageFailure_.has_value()) return *storageFailure_;
  if (successor_ != nullptr) return readNextChanged(key, record);
  Key found;
  const std::uint8_t* stored = nullptr;
  const Outcome outcome = findInBase(key, found, stored);
  if (outcome.ok()) std::memcpy(record, stored, recordSize);
  return outcome;
}

// What is not copied yet lies behind everything that the successor has.
Outcome Database::readNextChanged(const Key& key, std::uint8_t* record) {
  if (uncopied_ == nullptr || !uncopied_->isUncopied(key)) {
    const Outcome outcome = successor_->readNext(key, record);
    if (outcome != endOfData || uncopied_ == nullptr) return outcome;
  }
  return uncopied_->readNext(key, record);
}

Outcome Database::hold() const {
  return outcomeOfErrno(lockFile(base_->fd()));
}

Outcome Database::publish() {
  if (mode_ == OpenMode::read) return succeeded;
  if (storageFailure_.has_value()) return *storageFailure_;
  if (successor_ == nullptr && deleted_.count() == 0) return succeeded;
  runProgress().enter("writing");
  if (const Outcome outcome = prepareChange(); !outcome.ok()) return outcome;
  if (const Outcome outcome = copyRest(); !outcome.ok()) return outcome;
  if (const Outcome outcome = successor_->finish(); !outcome.ok()) return outcome;
  const Outcome outcome = mode_ == OpenMode::create
                              ? publishNew(paths_, successor_->fd(), modeOfNewFile())
                              : publishReplacement(paths_, successor_->fd(), base_->fd());
  if (outcome.ok()) successor_->keep();
  return outcome;
}

}  // namespace orx::kdb
