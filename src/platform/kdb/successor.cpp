#include "platform/kdb/successor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

// A transaction keeps its changed pages in private memory. About twelve appended records share a
// page; a record put anywhere else may change a page of its own. Updates come from operations that
// hold many records in memory anyway and go over the same pages again and again, so they may have
// more of it.
constexpr unsigned appendCost = 1;
constexpr unsigned updateCost = 1;
constexpr unsigned insertCost = 10;
constexpr unsigned transactionCost = 10000;

// Address space for the map: more than one transaction can use is always left over.
constexpr std::size_t firstMapSize = std::size_t{64} << 20;
constexpr std::size_t mapReserve = std::size_t{32} << 20;

// How many new bytes are handed to the disk at a time.
constexpr off_t writeBackStep = off_t{8} << 20;

MDB_val valueOf(const Key& key) {
  return {keySize, const_cast<std::uint8_t*>(key.bytes.data())};  // the engine does not write to it
}

MDB_val valueOf(const std::uint8_t* record) {
  return {recordSize, const_cast<std::uint8_t*>(record)};
}

// A file-size limit then shows as a failed write instead of ending the process.
void ignoreFileSizeSignal() {
  static const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  (void)previous;
}

bool stillLeadsTo(const std::string& path, int fd) {
  struct stat named {};
  struct stat opened {};
  return ::lstat(path.c_str(), &named) == 0 && ::fstat(fd, &opened) == 0 && sameFile(named, opened);
}

}  // namespace

Outcome Successor::discardStale(const std::string& path) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0) {
    return errno == ENOENT ? succeeded : outcomeOfErrno(errno);
  }
  if (S_ISREG(found.st_mode)) {
    const UniqueFd stale = openFile(path, O_RDONLY | O_NOFOLLOW);
    if (stale.valid()) {
      if (lockFile(stale.get()) != 0) return inUse;
      if (!stillLeadsTo(path, stale.get())) return inUse;
    }
  }
  return outcomeOfErrno(removeFile(path));
}

Outcome Successor::create(const std::string& path, std::unique_ptr<Successor>& successor) {
  ignoreFileSizeSignal();
  if (const Outcome outcome = discardStale(path); !outcome.ok()) return outcome;
  std::unique_ptr<Successor> made(new Successor);
  made->fd_ = openFile(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!made->fd_.valid()) return errno == EEXIST ? inUse : outcomeOfErrno(errno);
  made->path_ = path;
  if (lockFile(made->fd()) != 0 || !stillLeadsTo(path, made->fd())) return inUse;
  if (const Outcome outcome = made->openEngine(); !outcome.ok()) return outcome;
  successor = std::move(made);
  return succeeded;
}

Successor::~Successor() {
  cursor_.reset();
  transaction_.reset();
  environment_.reset();
  if (!path_.empty() && stillLeadsTo(path_, fd())) (void)removeFile(path_);
}

Outcome Successor::outcomeOf(int engineError) const {
  return engine::outcomeOf(engineError, fd());
}

Outcome Successor::openEngine() {
  MDB_env* environment = nullptr;
  if (const int error = mdb_env_create(&environment); error != 0) return outcomeOf(error);
  environment_.reset(environment);
  if (const int error = mdb_env_set_mapsize(environment, firstMapSize); error != 0) {
    return outcomeOf(error);
  }
  constexpr unsigned flags = MDB_NOSUBDIR | MDB_NOLOCK | MDB_NOSYNC | MDB_NOTLS;
  if (const int error = mdb_env_open(environment, path_.c_str(), flags, 0600); error != 0) {
    return outcomeOf(error);
  }
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  return outcomeOf(mdb_dbi_open(transaction_.get(), nullptr, 0, &table_));
}

Outcome Successor::begin() {
  if (transaction_ != nullptr) return succeeded;
  if (const Outcome outcome = growMap(); !outcome.ok()) return outcome;
  MDB_txn* transaction = nullptr;
  const int error = mdb_txn_begin(environment_.get(), nullptr, 0, &transaction);
  transaction_.reset(transaction);
  return outcomeOf(error);
}

// The map may only grow while no transaction is open.
Outcome Successor::growMap() {
  MDB_envinfo info{};
  MDB_stat statistics{};
  if (const int error = mdb_env_info(environment_.get(), &info); error != 0)
    return outcomeOf(error);
  if (const int error = mdb_env_stat(environment_.get(), &statistics); error != 0) {
    return outcomeOf(error);
  }
  const std::size_t used = (info.me_last_pgno + 1) * statistics.ms_psize;
  if (used + mapReserve <= info.me_mapsize) return succeeded;
  return outcomeOf(mdb_env_set_mapsize(environment_.get(), info.me_mapsize * 2));
}

Outcome Successor::commit() {
  cursor_.reset();
  pendingCost_ = 0;
  if (transaction_ == nullptr) return succeeded;
  const Outcome outcome = outcomeOf(mdb_txn_commit(transaction_.release()));
  if (outcome.ok()) startWriteBack();
  return outcome;
}

// Lets the disk work while the next records are prepared; the sync at the end then waits for less.
void Successor::startWriteBack() {
  MDB_envinfo info{};
  MDB_stat statistics{};
  if (mdb_env_info(environment_.get(), &info) != 0) return;
  if (mdb_env_stat(environment_.get(), &statistics) != 0) return;
  const auto end = static_cast<off_t>(info.me_last_pgno * statistics.ms_psize);
  if (end - writeBackFrom_ < writeBackStep) return;
  (void)::sync_file_range(fd(), writeBackFrom_, end - writeBackFrom_, SYNC_FILE_RANGE_WRITE);
  writeBackFrom_ = end;
}

Outcome Successor::commitWhenLarge(unsigned cost) {
  pendingCost_ += cost;
  return pendingCost_ < transactionCost ? succeeded : commit();
}

Outcome Successor::prepareCursor() {
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  if (cursor_ != nullptr) return succeeded;
  MDB_cursor* cursor = nullptr;
  const int error = mdb_cursor_open(transaction_.get(), table_, &cursor);
  cursor_.reset(cursor);
  return outcomeOf(error);
}

Outcome Successor::put(const Key& key, const std::uint8_t* record, unsigned flags) {
  if (const Outcome outcome = prepareCursor(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue = valueOf(record);
  return outcomeOf(mdb_cursor_put(cursor_.get(), &keyValue, &dataValue, flags));
}

Outcome Successor::add(const Key& key, const std::uint8_t* record) {
  const bool ascends = empty_ || key > lastKey_;
  const Outcome outcome = put(key, record, ascends ? MDB_APPEND : MDB_NOOVERWRITE);
  if (!outcome.ok()) return outcome;
  if (ascends) lastKey_ = key;
  empty_ = false;
  return commitWhenLarge(ascends ? appendCost : insertCost);
}

Outcome Successor::update(const Key& key, const std::uint8_t* record) {
  if (const Outcome outcome = prepareCursor(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue{};
  if (const int error = mdb_cursor_get(cursor_.get(), &keyValue, &dataValue, MDB_SET); error != 0) {
    return outcomeOf(error);
  }
  if (const Outcome outcome = put(key, record, MDB_CURRENT); !outcome.ok()) return outcome;
  return commitWhenLarge(updateCost);
}

Outcome Successor::erase(const Key& key) {
  if (const Outcome outcome = exists(key); !outcome.ok()) return outcome;
  cursor_.reset();
  MDB_val keyValue = valueOf(key);
  const Outcome outcome = outcomeOf(mdb_del(transaction_.get(), table_, &keyValue, nullptr));
  return outcome.ok() ? commitWhenLarge(insertCost) : outcome;
}

Outcome Successor::exists(const Key& key) {
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue{};
  return outcomeOf(mdb_get(transaction_.get(), table_, &keyValue, &dataValue));
}

Outcome Successor::readNext(const Key& key, std::uint8_t* record) {
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  MDB_cursor* opened = nullptr;
  if (const int error = mdb_cursor_open(transaction_.get(), table_, &opened); error != 0) {
    return outcomeOf(error);
  }
  const engine::Cursor cursor(opened);
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue{};
  const int error = mdb_cursor_get(opened, &keyValue, &dataValue, MDB_SET_RANGE);
  if (error == MDB_NOTFOUND) return endOfData;
  if (error != 0) return outcomeOf(error);
  std::memcpy(record, dataValue.mv_data, recordSize);
  return succeeded;
}

Outcome Successor::copyTo(int fd) {
  if (const Outcome outcome = commit(); !outcome.ok()) return outcome;
  if (const int error = mdb_env_copyfd2(environment_.get(), fd, MDB_CP_COMPACT); error != 0) {
    return engine::outcomeOf(error, fd);
  }
  return succeeded;
}

Outcome Successor::finish() {
  if (const Outcome outcome = commit(); !outcome.ok()) return outcome;
  MDB_envinfo info{};
  MDB_stat statistics{};
  if (const int error = mdb_env_info(environment_.get(), &info); error != 0)
    return outcomeOf(error);
  if (const int error = mdb_env_stat(environment_.get(), &statistics); error != 0) {
    return outcomeOf(error);
  }
  environment_.reset();
  const auto wanted = static_cast<off_t>((info.me_last_pgno + 1) * statistics.ms_psize);
  struct stat file {};
  if (::fstat(fd(), &file) != 0) return outcomeOfErrno(errno);
  if (file.st_size < wanted && ::ftruncate(fd(), wanted) != 0) return outcomeOfErrno(errno);
  return succeeded;
}

}  // namespace orx::kdb
