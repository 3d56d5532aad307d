#include "orxkdb/input/backup_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "platform/run_progress.h"
#include "records/backup_line.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t windowCapacity = std::size_t{256} * 1024;

}  // namespace

Result BackupFile::open(const std::string& name) {
  name_ = name;
  if (Result result = plain_.open(name); !result.ok()) return result;
  file_ = openFile(plain_.path(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat file {};
  if (!file_.valid() || ::fstat(file_.get(), &file) != 0) {
    return fileFailure(exitNotOpened, "the file cannot be opened", name, errno);
  }
  if (S_ISDIR(file.st_mode)) {
    return fileFailure(exitNotOpened, "the file cannot be opened", name, EISDIR);
  }
  if (!S_ISREG(file.st_mode)) {
    return fail(exitNotOpened, "this is neither a database nor a regular file", name,
                "save the backup in a file and give its name");
  }
  opened_ = stateOf(file_.get());
  size_ = static_cast<std::uint64_t>(file.st_size);
  window_.resize(windowCapacity);
  runProgress().startFile();
  enterPhase("reading");
  return size_ == 0 ? checkEmpty() : Result{};
}

void BackupFile::enterPhase(const char* phase) const {
  runProgress().enterFile(phase, plain_.path());
}

// A file that the system makes up while it is read has no size, and need not be readable at all.
Result BackupFile::checkEmpty() const {
  std::uint8_t byte = 0;
  const ssize_t count = orx::readAt(file_.get(), &byte, 1, 0);
  if (count < 0) return fileFailure(exitFailed, "the file cannot be read", name_, errno);
  if (count == 0) return {};
  return fail(exitNotOpened, "the file states a size of 0 but is not empty", name_,
              "copy it to another file and give its name");
}

bool BackupFile::next(BackupPiece& piece) {
  const std::string_view bytes = pieceAt(offset_);
  if (bytes.empty()) return false;
  const bool endsLine = bytes.ends_with('\n');
  piece = {withoutLineEnd(bytes), offset_, line_, continuesLine_};
  offset_ += bytes.size();
  runProgress().countRecord();
  continuesLine_ = !endsLine;
  if (endsLine) ++line_;
  return true;
}

bool BackupFile::readAt(std::uint64_t offset, CMDatabaseBackupRecord& record) {
  runProgress().countRecord();
  record.setLine(restoredText(pieceAt(offset)));
  return result_.ok();
}

Result BackupFile::finish() const {
  return stateOf(file_.get()) == opened_ ? result_ : changedFailure(name_);
}

void BackupFile::rewind() {
  runProgress().startFile();
  offset_ = 0;
  line_ = 1;
  continuesLine_ = false;
}

// With its line end; empty at the end of the file and after a failure.
std::string_view BackupFile::pieceAt(std::uint64_t offset) {
  const std::size_t wanted =
      static_cast<std::size_t>(std::min<std::uint64_t>(BackupLine::longest, size_ - offset));
  const bool isKept = offset >= windowOffset_ && offset + wanted <= windowOffset_ + windowSize_;
  if (!isKept && !readWindow(offset)) return {};
  const auto at = static_cast<std::size_t>(offset - windowOffset_);
  const std::string_view bytes = std::string_view(window_.data(), windowSize_).substr(at, wanted);
  return bytes.substr(
      0, bytes.find('\n') == std::string_view::npos ? bytes.size() : bytes.find('\n') + 1);
}

// What lies behind the window is likely to be read in order; a jump elsewhere is likely to be
// followed by another.
bool BackupFile::readWindow(std::uint64_t offset) {
  const std::uint64_t end = windowOffset_ + windowSize_;
  const bool continues = offset <= end && offset + BackupLine::longest >= end;
  const std::size_t size = continues ? window_.size() : BackupLine::longest;
  const ssize_t count =
      orx::readAt(file_.get(), static_cast<std::uint8_t*>(static_cast<void*>(window_.data())), size,
                  static_cast<off_t>(offset));
  if (count < 0) {
    result_ = fileFailure(exitFailed, "the file cannot be read", name_, errno);
    return false;
  }
  if (continues) runProgress().countBytes(static_cast<std::uint64_t>(count));
  windowOffset_ = offset;
  windowSize_ = static_cast<std::size_t>(count);
  return true;
}

}  // namespace orx::orxkdb
