#include "platform/atomic_file.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/file_rights.h"
#include "platform/interruption.h"
#include "platform/run_progress.h"

namespace orx {

namespace {
constexpr std::size_t bufferSize = std::size_t{256} * 1024;

// A lock that somebody else holds.
int busyOr(int lockError) {
  return lockError == EWOULDBLOCK ? EBUSY : lockError;
}

// Removes what a process that died left behind. EBUSY when its writer is alive, EEXIST when it is
// somebody else's.
int removeStale(const std::string& path) {
  const UniqueFd stale = openFile(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!stale.valid()) return errno == ENOENT ? 0 : errno == ELOOP ? EEXIST : errno;
  if (const int error = lockFile(stale.get()); error != 0) return busyOr(error);
  if (const int error = checkLeadsTo(path, stale.get(), EBUSY); error != 0) return error;
  bool marked = false;
  if (const int error = isMarked(stale.get(), marked); error != 0) return error;
  return marked ? removeFile(path) : EEXIST;
}

}  // namespace

AtomicFile::~AtomicFile() {
  CriticalStep step;
  step.leaveAlone(temporary_);
  if (!temporary_.empty() && leadsTo(temporary_, fd_.get())) (void)removeFile(temporary_);
}

int AtomicFile::open(const std::string& target) {
  const auto resolved = resolvePath(target);
  if (!resolved.has_value() && errno != ENOENT) return errno;
  return openUnresolved(resolved.value_or(target));
}

int AtomicFile::openUnresolved(const std::string& target) {
  target_ = target;
  FileRights existing;
  const int unknown = readRights(target_, existing);
  const bool replaces = unknown == 0;
  if (!replaces && unknown != ENOENT) return unknown;  // what cannot be looked at is not replaced
  const mode_t mode = existing.file.st_mode;
  if (replaces && !S_ISREG(mode)) return S_ISDIR(mode) ? EISDIR : EEXIST;
  const std::string temporary = target_ + std::string(unpublishedSuffix);
  if (const int error = removeStale(temporary); error != 0) return error;
  if (const int error = create(temporary); error != 0) return error == EEXIST ? EBUSY : error;
  if (const int error = lockFile(fd_.get()); error != 0) return busyOr(error);
  if (const int error = checkLeadsTo(temporary, fd_.get(), EBUSY); error != 0) return error;
  return replaces ? giveRights(fd_.get(), existing, unpublishedMark) : 0;
}

int AtomicFile::create(const std::string& path) {
  temporary_ = path;  // first: nothing may want memory between the making of the file and this
  CriticalStep step;
  fd_ = openFile(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0640 | unpublishedMark);
  if (!fd_.valid()) return errno;
  step.removeWhenInterrupted(path, fd_.get());
  return 0;
}

int AtomicFile::write(std::string_view bytes) {
  buffer_.append(bytes);
  return buffer_.size() < bufferSize ? error_ : flush();
}

int AtomicFile::flush() {
  if (error_ == 0) error_ = writeAll(fd_.get(), buffer_);
  buffer_.clear();
  return error_;
}

int AtomicFile::publish() {
  if (flush() != 0) return error_;
  runProgress().enter("syncing");
  if (const int error = syncFile(fd_.get()); error != 0) return error;
  CriticalStep step;
  if (const int error = checkLeadsTo(temporary_, fd_.get(), EBUSY); error != 0) return error;
  if (const int error = renameFile(temporary_, target_, false); error != 0) return error;
  step.notePublished();
  step.leaveAlone(temporary_);
  temporary_.clear();
  published_ = true;
  // Without the mark, and with the name lost in a power failure, it would be somebody else's file.
  const int error = syncDirectory(directoryOf(target_));
  if (error == 0) (void)clearMark(fd_.get());
  return error;
}

}  // namespace orx
