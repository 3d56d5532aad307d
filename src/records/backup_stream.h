// The records of a backup file, read and built ahead by a second thread while the caller stores
// those before them.
//
// Order of calls: open(); start(), if reading ahead is wanted; next() until it gives no line;
// hasChanged(); close(), which the end of the object does too.
//
// Records come in the order of the file and in bounded batches, so memory does not grow with it.
// While a trace is open everything happens in the caller's own thread: the outcome is the same.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/read_ahead.h"
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

  // As BackupReader::open; nothing is read yet. After a failure nothing but errorNumber() may
  // follow.
  [[nodiscard]] bool open(const char* path);
  // Why it could not be opened, an errno value.
  [[nodiscard]] int errorNumber() const { return reader_.errorNumber(); }
  // Begins to read ahead, when the backup is a regular file. Without it the first next() reads.
  void start();
  // As BackupReader::next, as a record of the database: `record` changes only when the outcome is
  // `line`. Rethrows std::bad_alloc of the thread.
  ReadOutcome next(DataBuffer& record);
  // As BackupReader::hasChanged.
  [[nodiscard]] bool hasChanged() const { return reader_.hasChanged(); }
  // Waits for the thread to finish its batch.
  void close();

 private:
  struct Batch {
    std::vector<DataBuffer> records;
    std::size_t count = 0;                // of `records` that are filled
    ReadOutcome end = ReadOutcome::line;  // what followed the last record, if anything but a line
  };

  void readBatch(Batch& batch);

  BackupReader reader_;
  CMDatabaseBackupRecord line_;
  std::optional<ReadAhead<Batch>> ahead_;
  Batch current_;
  std::size_t at_ = 0;
};

}  // namespace orx
