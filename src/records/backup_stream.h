// The records of a backup file, read and built ahead by a second thread while the caller stores
// those before them.
//
// Records come in the order of the file and in bounded batches, so memory does not grow with it.
// While a trace is open, or when no thread can be had, everything happens in the caller's own
// thread: the outcome is the same.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "records/backup_reader.h"
#include "records/backup_record.h"
#include "records/data_buffer.h"

namespace orx {

class BackupStream {
 public:
  BackupStream() = default;
  BackupStream(const BackupStream&) = delete;
  BackupStream& operator=(const BackupStream&) = delete;
  ~BackupStream() { close(); }

  // As BackupReader::open; nothing is read yet.
  [[nodiscard]] bool open(const char* path);
  // Begins to read ahead, when the backup is a regular file. Without it the first next() reads.
  void start();
  // As BackupReader::next, as a record of the database. Rethrows std::bad_alloc of the thread.
  ReadOutcome next(DataBuffer& record);
  void close();

 private:
  static constexpr std::size_t batchRecords = 2048;
  static constexpr std::size_t batchesAhead = 4;

  struct Batch {
    std::vector<DataBuffer> records;
    ReadOutcome end = ReadOutcome::line;  // what followed the last record, if anything but a line
    std::exception_ptr failure;
  };

  void readAhead();
  void readBatch(Batch& batch);
  [[nodiscard]] bool hand(Batch& batch);
  void take(Batch& batch);

  BackupReader reader_;
  CMDatabaseBackupRecord line_;
  std::thread thread_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::array<Batch, batchesAhead> ready_;  // a ring: readyCount_ batches from firstReady_ on
  std::size_t firstReady_ = 0;
  std::size_t readyCount_ = 0;
  bool stop_ = false;

  Batch current_;
  std::size_t at_ = 0;
};

}  // namespace orx
