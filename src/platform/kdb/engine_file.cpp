#include "platform/kdb/engine_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/file.h"
#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

// A transaction keeps its changed pages in private memory. About twelve appended records share a
// page, and 2,500 of them stay in the processor's cache until they are written. An update may
// change a page of its own, any other change several.
constexpr unsigned appendCost = 4;
constexpr unsigned updateCost = 4;
constexpr unsigned insertCost = 10;
constexpr unsigned transactionCost = 10000;

// Address space for the map: more than one transaction can use is always left over.
constexpr std::size_t firstMapSize = std::size_t{64} << 20;
constexpr std::size_t mapReserve = std::size_t{32} << 20;
static_assert(mapReserve >= transactionCost / updateCost * 2 * 4096);

// How many new bytes are handed to the disk at a time.
constexpr off_t writeBackStep = off_t{8} << 20;

MDB_val valueOf(const Key& key) {
  return {keySize, const_cast<std::uint8_t*>(key.bytes.data())};  // the engine does not write to it
}

MDB_val valueOf(const std::uint8_t* record) {
  return {recordSize, const_cast<std::uint8_t*>(record)};
}

}  // namespace

// How far the file reaches, written or not, and how far it may.
struct EngineFile::Extent {
  std::size_t used = 0;
  std::size_t map = 0;
};

Outcome EngineFile::measure(Extent& extent) const {
  MDB_envinfo info{};
  MDB_stat statistics{};
  int error = mdb_env_info(environment_.get(), &info);
  if (error == 0) error = mdb_env_stat(environment_.get(), &statistics);
  extent = {(info.me_last_pgno + 1) * statistics.ms_psize, info.me_mapsize};
  return outcomeOf(error);
}

Outcome EngineFile::open(const std::string& path, int fd, std::unique_ptr<EngineFile>& file) {
  std::unique_ptr<EngineFile> opened(new EngineFile(fd));
  const Outcome outcome = opened->openEngine(path);
  if (outcome.ok()) file = std::move(opened);
  return outcome;
}

Outcome EngineFile::outcomeOf(int engineError) const {
  return engine::outcomeOf(engineError, fd_);
}

// The engine opens and begins its files by name, and the name may lead elsewhere by now: that of
// the descriptor cannot. Where there is none (no /proc), the file's own has to do.
Outcome EngineFile::openEngine(const std::string& path) {
  Outcome outcome = openEnvironment("/proc/self/fd/" + std::to_string(fd_));
  if (outcome == recordNotFound || outcome == noPermission) outcome = openEnvironment(path);
  if (!outcome.ok()) return outcome;
  int opened = -1;
  if (const int error = mdb_env_get_fd(environment_.get(), &opened); error != 0) {
    return outcomeOf(error);
  }
  if (!isSameFile(opened, fd_)) return inputOutputError;
  outcome = checkNotCut();
  if (outcome.ok()) outcome = begin();
  return !outcome.ok() ? outcome : outcomeOf(mdb_dbi_open(transaction_.get(), nullptr, 0, &table_));
}

Outcome EngineFile::openEnvironment(const std::string& path) {
  environment_.reset();
  MDB_env* environment = nullptr;
  if (const int error = mdb_env_create(&environment); error != 0) return outcomeOf(error);
  environment_.reset(environment);
  if (const int error = mdb_env_set_mapsize(environment, firstMapSize); error != 0) {
    return outcomeOf(error);
  }
  constexpr unsigned flags = MDB_NOSUBDIR | MDB_NOLOCK | MDB_NOSYNC | MDB_NOTLS;
  return outcomeOf(mdb_env_open(environment, path.c_str(), flags, 0600));
}

Outcome EngineFile::begin() {
  if (transaction_ != nullptr) return succeeded;
  if (const Outcome outcome = growMap(); !outcome.ok()) return outcome;
  MDB_txn* transaction = nullptr;
  const int error = mdb_txn_begin(environment_.get(), nullptr, 0, &transaction);
  transaction_.reset(transaction);
  return outcomeOf(error);
}

// The map may only grow while no transaction is open.
Outcome EngineFile::growMap() {
  Extent extent;
  if (const Outcome outcome = measure(extent); !outcome.ok()) return outcome;
  if (extent.used + mapReserve <= extent.map) return succeeded;
  return outcomeOf(mdb_env_set_mapsize(environment_.get(), extent.map * 2));
}

Outcome EngineFile::commit() {
  cursor_.reset();
  pendingCost_ = 0;
  if (transaction_ == nullptr) return succeeded;
  // Before it as well: it may write behind the cut, and make the file long again.
  Outcome outcome = checkNotCut();
  if (!outcome.ok()) return outcome;
  outcome = outcomeOf(mdb_txn_commit(transaction_.release()));
  if (outcome.ok()) outcome = checkNotCut();
  if (outcome.ok()) startWriteBack();
  return outcome;
}

// Whoever cuts the file makes holes in it, which would be read as zeros.
Outcome EngineFile::checkNotCut() {
  struct stat file {};
  if (::fstat(fd_, &file) != 0) return outcomeOfErrno(errno);
  if (file.st_size < knownSize_) return inputOutputError;
  knownSize_ = file.st_size;
  return succeeded;
}

// Lets the disk work while the next records are prepared; the sync at the end then waits for less.
void EngineFile::startWriteBack() {
  Extent extent;
  if (!measure(extent).ok()) return;
  const auto end = static_cast<off_t>(extent.used);
  if (end - writeBackFrom_ < writeBackStep) return;
  (void)::sync_file_range(fd_, writeBackFrom_, end - writeBackFrom_, SYNC_FILE_RANGE_WRITE);
  writeBackFrom_ = end;
}

Outcome EngineFile::commitWhenLarge(unsigned cost) {
  pendingCost_ += cost;
  return pendingCost_ < transactionCost ? succeeded : commit();
}

Outcome EngineFile::prepareCursor() {
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  if (cursor_ != nullptr) return succeeded;
  MDB_cursor* cursor = nullptr;
  const int error = mdb_cursor_open(transaction_.get(), table_, &cursor);
  cursor_.reset(cursor);
  return outcomeOf(error);
}

Outcome EngineFile::put(const Key& key, const std::uint8_t* record, unsigned flags) {
  if (const Outcome outcome = prepareCursor(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue = valueOf(record);
  return outcomeOf(mdb_cursor_put(cursor_.get(), &keyValue, &dataValue, flags));
}

Outcome EngineFile::append(const Key& key, const std::uint8_t* record) {
  if (const Outcome outcome = put(key, record, MDB_APPEND); !outcome.ok()) return outcome;
  lastKey_ = key;
  empty_ = false;
  return commitWhenLarge(appendCost);
}

Outcome EngineFile::insert(const Key& key, const std::uint8_t* record) {
  const Outcome outcome = put(key, record, MDB_NOOVERWRITE);
  return outcome.ok() ? commitWhenLarge(insertCost) : outcome;
}

Outcome EngineFile::update(const Key& key, const std::uint8_t* record) {
  if (const Outcome outcome = prepareCursor(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue{};
  if (const int error = mdb_cursor_get(cursor_.get(), &keyValue, &dataValue, MDB_SET); error != 0) {
    return outcomeOf(error);
  }
  if (const Outcome outcome = put(key, record, MDB_CURRENT); !outcome.ok()) return outcome;
  return commitWhenLarge(updateCost);
}

Outcome EngineFile::erase(const Key& key) {
  if (const Outcome outcome = find(key); !outcome.ok()) return outcome;
  cursor_.reset();
  MDB_val keyValue = valueOf(key);
  const Outcome outcome = outcomeOf(mdb_del(transaction_.get(), table_, &keyValue, nullptr));
  return outcome.ok() ? commitWhenLarge(insertCost) : outcome;
}

Outcome EngineFile::find(const Key& key) {
  if (const Outcome outcome = begin(); !outcome.ok()) return outcome;
  MDB_val keyValue = valueOf(key);
  MDB_val dataValue{};
  return outcomeOf(mdb_get(transaction_.get(), table_, &keyValue, &dataValue));
}

Outcome EngineFile::readNext(const Key& key, std::uint8_t* record) {
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

Outcome EngineFile::copyTo(int fd) {
  if (const Outcome outcome = commit(); !outcome.ok()) return outcome;
  if (const int error = mdb_env_copyfd2(environment_.get(), fd, MDB_CP_COMPACT); error != 0) {
    return engine::outcomeOf(error, fd);
  }
  return succeeded;
}

Outcome EngineFile::finish() {
  if (const Outcome outcome = commit(); !outcome.ok()) return outcome;
  Extent extent;
  if (const Outcome outcome = measure(extent); !outcome.ok()) return outcome;
  environment_.reset();
  if (const Outcome outcome = checkNotCut(); !outcome.ok()) return outcome;
  const auto wanted = static_cast<off_t>(extent.used);
  return knownSize_ < wanted ? outcomeOfErrno(setSize(fd_, wanted)) : succeeded;
}

}  // namespace orx::kdb
