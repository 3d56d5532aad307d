#include "platform/kdb/successor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/interruption.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/leftover.h"

namespace orx::kdb {

namespace {

// Records out of order go straight into the engine's file while they are few beside the others.
constexpr std::uint64_t fewInsertions = 100;
constexpr std::uint64_t appendsPerInsertion = 32;

// The process' mask may have taken away what the engine needs to open the file.
int grantOwnUse(int fd) {
  constexpr mode_t ownUse = S_IRUSR | S_IWUSR;
  struct stat file {};
  if (::fstat(fd, &file) != 0) return errno;
  if ((file.st_mode & ownUse) == ownUse) return 0;
  return setMode(fd, ownUse | unpublishedMark);
}

// A file-size limit then shows as a failed write instead of ending the process.
void ignoreFileSizeSignal() {
  static const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  (void)previous;
}

}  // namespace

Outcome Successor::create(const DatabasePaths& paths, std::unique_ptr<Successor>& successor) {
  ignoreFileSizeSignal();
  if (const Outcome outcome = settleLeftover(paths, -1); !outcome.ok()) return outcome;
  const std::string& path = paths.successor;
  std::unique_ptr<Successor> made(new Successor);
  if (const int failed = made->createFile(path); failed != 0) {
    return failed == EEXIST ? inUse : outcomeOfErrno(failed);
  }
  int error = lockFile(made->fd());
  if (error == 0) error = checkLeadsTo(path, made->fd(), EWOULDBLOCK);
  if (error != 0) return outcomeOfErrno(error);
  if (const Outcome outcome = made->openEngine(); !outcome.ok()) return outcome;
  successor = std::move(made);
  return succeeded;
}

int Successor::createFile(const std::string& path) {
  path_ = path;  // first: nothing may want memory between the making of the file and this
  CriticalStep step;
  fd_ = openFile(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600 | unpublishedMark);
  if (!fd_.valid()) return errno;
  step.removeWhenInterrupted(path, fd());
  return grantOwnUse(fd());
}

void Successor::keep() {
  CriticalStep().leaveAlone(path_);
  path_.clear();
}

Successor::~Successor() {
  engine_.reset();
  CriticalStep step;
  step.leaveAlone(path_);
  if (!path_.empty() && leadsTo(path_, fd())) (void)removeFile(path_);
}

Outcome Successor::openEngine() {
  return EngineFile::open(path_, fd(), engine_);
}

Outcome Successor::add(const Key& key, const std::uint8_t* record) {
  if (engine_->isBehindAll(key)) {
    ++appended_;
    return engine_->append(key, record);
  }
  if (runs_ == nullptr && wantsRuns()) {
    if (const Outcome outcome = startRuns(); !outcome.ok()) return outcome;
  }
  if (runs_ != nullptr) return addToRuns(key, record);
  ++inserted_;
  return engine_->insert(key, record);
}

bool Successor::wantsRuns() const {
  return runsAreWorthwhile_ && inserted_ > fewInsertions + appended_ / appendsPerInsertion;
}

// Without files that have no name, the engine has to take the records as they come.
Outcome Successor::startRuns() {
  const int error = SortedRuns::create(directoryOf(path_), runs_);
  const bool unsupported = error == EOPNOTSUPP || error == EISDIR || error == EINVAL;
  if (unsupported) runsAreWorthwhile_ = false;
  return unsupported ? succeeded : outcomeOfErrno(error);
}

Outcome Successor::addToRuns(const Key& key, const std::uint8_t* record) {
  const Outcome inEngine = engine_->find(key);
  if (inEngine.ok()) return duplicateKey;
  return inEngine == recordNotFound ? runs_->add(key, record) : inEngine;
}

// Brings everything into the engine's file: what that has becomes a run, and all runs are merged
// into it from its beginning.
Outcome Successor::settle() {
  if (runs_ == nullptr) return succeeded;
  const std::unique_ptr<SortedRuns> runs = std::move(runs_);
  runsAreWorthwhile_ = false;
  Outcome outcome = engine_->forEach([&runs](const Key& key, const std::uint8_t* record) {
    return runs->appendSorted(key, record);
  });
  if (outcome.ok()) outcome = runs->startReading();
  if (outcome.ok()) outcome = restartEngine();
  if (outcome.ok()) outcome = appendAll(*runs);
  release_.close(runs->takeFile());
  // Whatever went wrong, the records are in no order that could be worked with.
  return outcome.ok() || isStorageFailure(outcome.code) ? outcome : inputOutputError;
}

// The file itself stays, and the lock on it.
Outcome Successor::restartEngine() {
  engine_.reset();
  if (const int error = setSize(fd(), 0); error != 0) return outcomeOfErrno(error);
  return openEngine();
}

Outcome Successor::appendAll(SortedRuns& runs) {
  Key key;
  const std::uint8_t* record = nullptr;
  Outcome outcome = runs.next(key, record);
  while (outcome.ok()) {
    outcome = engine_->append(key, record);
    if (outcome.ok()) outcome = runs.next(key, record);
  }
  return outcome == endOfData ? succeeded : outcome;
}

Outcome Successor::update(const Key& key, const std::uint8_t* record) {
  const Outcome outcome = settle();
  return outcome.ok() ? engine_->update(key, record) : outcome;
}

Outcome Successor::erase(const Key& key) {
  const Outcome outcome = settle();
  return outcome.ok() ? engine_->erase(key) : outcome;
}

Outcome Successor::readNext(const Key& key, std::uint8_t* record) {
  const Outcome outcome = settle();
  return outcome.ok() ? engine_->readNext(key, record) : outcome;
}

Outcome Successor::copyTo(int fd) {
  const Outcome outcome = settle();
  return outcome.ok() ? engine_->copyTo(fd) : outcome;
}

Outcome Successor::finish() {
  const Outcome outcome = settle();
  return outcome.ok() ? engine_->finish() : outcome;
}

}  // namespace orx::kdb
