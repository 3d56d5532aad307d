#include "records/backup_stream.h"

#include <system_error>
#include <utility>

#include "platform/trace.h"

namespace orx {

// Only a regular file never keeps its reader waiting: close() waits for the thread.
void BackupStream::start() {
  if (traceIsOpen() || thread_.joinable() || !reader_.isRegularFile()) return;
  try {
    thread_ = std::thread([this] { readAhead(); });
  } catch (const std::system_error&) {
    // no thread to be had: next() reads by itself
  }
}

bool BackupStream::open(const char* path) {
  close();
  stop_ = false;
  firstReady_ = readyCount_ = at_ = 0;
  current_ = Batch();
  return reader_.open(path);
}

void BackupStream::close() {
  if (thread_.joinable()) {
    {
      const std::lock_guard lock(mutex_);
      stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  reader_.close();
}

// Reuses what the batch holds; an exception ends up in it.
void BackupStream::readBatch(Batch& batch) {
  batch.records.clear();
  batch.end = ReadOutcome::line;
  try {
    batch.records.reserve(batchRecords);
    while (batch.records.size() < batchRecords) {
      batch.end = reader_.next(line_);
      if (batch.end != ReadOutcome::line) break;
      line_.buildDataBuffer(batch.records.emplace_back());
    }
  } catch (const std::bad_alloc&) {
    batch.failure = std::current_exception();
  }
}

void BackupStream::readAhead() {
  Batch batch;
  bool goesOn = true;
  while (goesOn) {
    readBatch(batch);
    const bool last = batch.end != ReadOutcome::line || batch.failure != nullptr;
    goesOn = hand(batch) && !last;
  }
}

// Gives a batch away and gets an empty one for it.
bool BackupStream::hand(Batch& batch) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stop_ || readyCount_ < batchesAhead; });
  if (stop_) return false;
  std::swap(ready_[(firstReady_ + readyCount_) % batchesAhead], batch);
  ++readyCount_;
  changed_.notify_all();
  return true;
}

void BackupStream::take(Batch& batch) {
  if (!thread_.joinable()) return readBatch(batch);
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return readyCount_ > 0; });
  std::swap(batch, ready_[firstReady_]);
  firstReady_ = (firstReady_ + 1) % batchesAhead;
  --readyCount_;
  changed_.notify_all();
}

ReadOutcome BackupStream::next(DataBuffer& record) {
  while (at_ == current_.records.size()) {
    if (current_.failure != nullptr) std::rethrow_exception(current_.failure);
    if (current_.end != ReadOutcome::line) return current_.end;
    at_ = 0;
    take(current_);
  }
  record = current_.records[at_++];
  return ReadOutcome::line;
}

}  // namespace orx
