#include "records/backup_reader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/run_progress.h"
#include "records/backup_record.h"
#include "records/record_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = recordTraceUnit;

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

// 0, or the error number of a descriptor that cannot be read as a file.
int whyUnreadable(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return errno;
  return S_ISDIR(status.st_mode) ? EISDIR : 0;
}

}  // namespace

BackupReader::~BackupReader() {
  ORX_TRACE("BackupReader destructor");
  close();
}

bool BackupReader::isRegularFile() const {
  return opened_.has_value();
}

bool BackupReader::hasChanged() const {
  return isRegularFile() && stateOf(file_.get()) != opened_;
}

void BackupReader::close() {
  ORX_TRACE("BackupReader::close");
  file_.reset();
  opened_.reset();
  ended_ = false;
  begin_ = end_ = 0;
}

bool BackupReader::open(const char* path) {
  ORX_TRACE("BackupReader::open");
  close();
  buffer_.resize(bufferSize);
  runProgress().startFile();
  UniqueFd file = openFile(path, O_RDONLY);
  errorNumber_ = file.valid() ? whyUnreadable(file.get()) : errno;
  if (errorNumber_ != 0) return trace.exit(false);
  file_ = std::move(file);
  opened_ = stateOf(file_.get());
  return trace.exit(true);
}

ReadOutcome BackupReader::next(CMDatabaseBackupRecord& record) {
  ORX_TRACE("BackupReader::next record");
  std::string_view text;
  const ReadOutcome outcome = nextText(text);
  if (outcome == ReadOutcome::line) record.setLine(text);
  return trace.exit(outcome);
}

ReadOutcome BackupReader::next(BackupLine& line) {
  ORX_TRACE("BackupReader::next line");
  std::string_view text;
  const ReadOutcome outcome = nextText(text);
  if (outcome == ReadOutcome::line) {
    std::fill(std::copy(text.begin(), text.end(), line.chars.begin()), line.chars.end(), '\0');
  }
  return trace.exit(outcome);
}

// `text` points into the buffer: it holds until the buffer is filled again.
ReadOutcome BackupReader::nextText(std::string_view& text) {
  if (!isOpen()) return ReadOutcome::end;
  const std::size_t length = pieceLength();
  if (errorNumber_ != 0 && length == 0) return ReadOutcome::error;
  const std::string_view piece(buffer_.data() + begin_, length);
  if (piece.empty() || piece.front() == '\0') {
    ended_ = true;
    end_ = begin_;
    return ReadOutcome::end;
  }
  begin_ += length;
  text = restoredText(piece);
  return ReadOutcome::line;
}

// The length of the next piece, its line feed included; 0 when nothing is left or reading failed
// before the piece was complete.
std::size_t BackupReader::pieceLength() {
  while (true) {
    const char* const start = buffer_.data() + begin_;
    const std::size_t length = std::min(end_ - begin_, BackupLine::longest);
    const void* const feed = length == 0 ? nullptr : std::memchr(start, '\n', length);
    if (feed != nullptr) {
      return static_cast<std::size_t>(static_cast<const char*>(feed) - start) + 1;
    }
    if (length == BackupLine::longest) return length;
    if (ended_) return errorNumber_ == 0 ? length : 0;
    fill();
  }
}

// Moves the unread bytes, less than a line, to the front and reads behind them.
void BackupReader::fill() {
  std::copy(buffer_.data() + begin_, buffer_.data() + end_, buffer_.data());
  end_ -= begin_;
  begin_ = 0;
  const ssize_t count = readSome(file_.get(), buffer_.data() + end_, buffer_.size() - end_);
  if (count > 0) {
    end_ += static_cast<std::size_t>(count);
    runProgress().countBytes(static_cast<std::uint64_t>(count));
  } else {
    ended_ = true;
    if (count < 0) errorNumber_ = errno;
  }
}

}  // namespace orx
