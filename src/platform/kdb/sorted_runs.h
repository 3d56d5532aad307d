// SortedRuns: records that arrive in any order and are read back once, in key order.
//
// The engine takes records out of order more than ten times as slowly as it appends them. So they
// gather here in a buffer; a full buffer is sorted and becomes a run in a file without a name, many
// runs are merged into one, and in the end all that are left. Fewer than fill a buffer stay there.
//
//   SortedRuns::create(directory, runs); runs->add(key, record); ...;
//   runs->appendSorted(key, record); ...;   // where there are records in order as well
//   if (runs->startReading().ok()) while (runs->next(key, record).ok()) ...
//
// In this order and once; after a failure other than 4/46 nothing but takeFile() may follow.
// Nothing is left of the file when the object or the process goes.
//
// A second thread writes a full buffer while the next one fills, and reads the runs ahead in the
// end.
//
// Private memory at any number of records: two buffers of 6 MB, a filter of 8 MB, and 3 MB while
// records are added; 10 MB while they are read; 20 bytes for every 100 records all the time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/kdb/key.h"
#include "platform/kdb/key_filter.h"
#include "platform/kdb/record_buffer.h"
#include "platform/kdb/run_merge.h"
#include "platform/kdb_codes.h"
#include "platform/read_ahead.h"

namespace orx::kdb {

class SortedRuns {
 public:
  // Makes the file in `directory`. 0, or an errno value and `runs` as it was: EOPNOTSUPP, EISDIR or
  // EINVAL where the file system has no files without a name. `runRecords` records make a run.
  [[nodiscard]] static int create(const std::string& directory, std::unique_ptr<SortedRuns>& runs,
                                  std::size_t runRecords = RecordBuffer::mostRecords);

  // `record` is 296 bytes. 4/46 when the key is there already; adding may go on. A failure to write
  // may be told at a later record than the one that was to be written.
  [[nodiscard]] Outcome add(const Key& key, const std::uint8_t* record);

  // Takes records in key order, none of which was added before. No add() may follow.
  [[nodiscard]] Outcome appendSorted(const Key& key, const std::uint8_t* record);

  // Ends the adding.
  [[nodiscard]] Outcome startReading();
  // `record` points at 296 bytes that stay valid until the next call. endOfData behind the last.
  [[nodiscard]] Outcome next(Key& key, const std::uint8_t*& record);
  // Ends everything; the file, whose space goes when it is closed. May take as long as the writing
  // of a buffer.
  [[nodiscard]] UniqueFd takeFile();

 private:
  struct Batch {
    std::vector<std::uint8_t> entries;
    Outcome outcome;  // why there are no more
  };

  SortedRuns(UniqueFd file, std::size_t runRecords);
  void rememberKeys();
  [[nodiscard]] Outcome startWriting();
  [[nodiscard]] Outcome finishWriting();
  [[nodiscard]] Outcome writeRest();
  [[nodiscard]] Outcome writeFull();
  [[nodiscard]] Outcome append(Run& run, const std::uint8_t* entry);
  [[nodiscard]] Outcome finish(Run& run);
  [[nodiscard]] Outcome flush();
  [[nodiscard]] Outcome mergeFullLevels();
  [[nodiscard]] bool isFull(unsigned level) const;
  [[nodiscard]] Outcome mergeLevel(unsigned level);
  [[nodiscard]] Outcome search(const Key& key);
  [[nodiscard]] Outcome searchRun(const Run& run, const Key& key);
  [[nodiscard]] bool isInMemory() const { return !hasRuns_; }
  [[nodiscard]] Outcome nextInMemory(Key& key, const std::uint8_t*& record);
  [[nodiscard]] Outcome nextOfRuns(Key& key, const std::uint8_t*& record);
  bool fill(Batch& batch);

  UniqueFd file_;
  RecordBuffer buffer_;
  bool hasRuns_ = false;
  KeyFilter filter_;                 // of all keys, once add() has filled a buffer
  std::vector<std::uint8_t> block_;  // that was searched last

  // All these belong to the writing while there is one.
  RecordBuffer full_;
  std::vector<Run> runs_;
  std::uint64_t keys_ = 0;     // in runs
  std::uint64_t written_ = 0;  // entries in the file and in pending_
  std::string pending_;

  Run sorted_;  // of appendSorted
  RunMerge reading_;
  Batch batch_;
  std::size_t at_ = 0;  // what next() gives: a byte of the batch, or an index of the buffer
  std::optional<ReadAhead<Batch>> ahead_;
  std::future<Outcome> writing_;  // the last member: its end is waited for before others go
};

}  // namespace orx::kdb
