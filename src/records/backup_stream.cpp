#include "records/backup_stream.h"

#include "platform/trace.h"

namespace orx {

namespace {

// What waits between the two threads fits into a processor's cache.
constexpr std::size_t batchRecords = 512;

}  // namespace

bool BackupStream::open(const char* path) {
  close();
  ahead_.emplace([this](Batch& batch) {
    readBatch(batch);
    return batch.end == ReadOutcome::line;
  });
  current_ = Batch();
  at_ = 0;
  return reader_.open(path);
}

// Only a regular file never keeps its reader waiting: close() waits for the thread.
void BackupStream::start() {
  if (!traceIsOpen() && reader_.isRegularFile()) ahead_->start();
}

void BackupStream::close() {
  ahead_.reset();
  reader_.close();
}

void BackupStream::readBatch(Batch& batch) {
  batch.records.resize(batchRecords);
  for (batch.count = 0; batch.count < batchRecords; ++batch.count) {
    batch.end = reader_.next(line_);
    if (batch.end != ReadOutcome::line) return;
    line_.buildDataBuffer(batch.records[batch.count]);
  }
}

ReadOutcome BackupStream::next(DataBuffer& record) {
  while (at_ == current_.count) {
    if (current_.end != ReadOutcome::line) return current_.end;
    at_ = 0;
    if (!ahead_->take(current_)) return ReadOutcome::error;
  }
  record = current_.records[at_++];
  return ReadOutcome::line;
}

}  // namespace orx
