// DatabaseReader: one pass over the records of a database, in database order.
//
//   DatabaseReader reader;
//   if (Result result = reader.open(name); !result.ok()) return result;
//   return reader.forEach([&](const DataBuffer& record) -> Result { ... });
//
// It reads one whole state of the database, whatever is published meanwhile, and takes no lock. Of
// a database that is worth it, a second thread reads ahead from the first next() on: the database
// belongs to that thread until next() has said false or rewind() was called. Counts as the progress
// of the run.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orxkdb/result.h"
#include "platform/kdb.h"
#include "platform/read_ahead.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

class DatabaseReader {
 public:
  DatabaseReader() = default;
  DatabaseReader(const DatabaseReader&) = delete;
  DatabaseReader& operator=(const DatabaseReader&) = delete;
  ~DatabaseReader();

  // Once for a reader, before anything else.
  Result open(const std::string& name);
  // Has `look` called for each record by the thread that reads it; what it says goes along with the
  // record. Before the first next().
  void lookAtEach(bool (*look)(const DataBuffer& record)) { look_ = look; }
  // Starts at the first record again, in the same state of the database. Not after a failure.
  Result rewind();

  // False at the end and after a failure, which stays; result() tells which.
  [[nodiscard]] bool next(DataBuffer& record);
  [[nodiscard]] const Result& result() const { return result_; }
  // Whether `record`, the last that next() gave, is stored under its own key.
  [[nodiscard]] bool isUnderItsKey(const DataBuffer& record) const;
  // What `look` said of it; false without one.
  [[nodiscard]] bool lookResult() const { return last().lookResult; }
  // The key that the last record is stored under, in a record that is zero otherwise, and in words.
  // These four are for after a next() that was true.
  [[nodiscard]] DataBuffer storedKey() const;
  [[nodiscard]] std::string storedName() const;
  // The database, for other ways of reading before the first next() or after the last; it goes
  // stale with the reader.
  [[nodiscard]] kdb::kdbHandle handle() const { return database_; }
  // The number of records that next() gave.
  [[nodiscard]] std::uint64_t count() const { return count_; }

  // Calls visit(record) for every record until it returns a failure. That failure, or the one that
  // ended the reading.
  template <typename Visit>
  Result forEach(Visit visit) {
    DataBuffer record;
    while (next(record)) {
      if (Result visited = visit(record); !visited.ok()) return visited;
    }
    return result_;
  }

 private:
  struct StoredRecord {
    DataBuffer record;
    std::array<std::uint8_t, kdb::keySize> key{};  // that it is stored under
    bool lookResult = false;
  };
  struct Batch {
    std::vector<StoredRecord> records;
    std::size_t count = 0;  // of `records` that are filled
    Result result;          // why there are no more
  };

  bool fill(Batch& batch);
  bool readRecord(StoredRecord& stored, Result& result);
  [[nodiscard]] const StoredRecord& last() const { return batch_.records[at_ - 1]; }

  std::string name_;
  kdb::kdbHandle database_;
  kdb::kdbHandle cursor_;
  bool (*look_)(const DataBuffer& record) = nullptr;
  std::uint64_t readCount_ = 0;  // by whoever fills batches
  std::optional<ReadAhead<Batch>> ahead_;
  Batch batch_;
  std::size_t at_ = 0;  // behind the record that next() gave
  std::uint64_t count_ = 0;
  Result result_;
};

}  // namespace orx::orxkdb
